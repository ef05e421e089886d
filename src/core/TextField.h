#pragma once

#include <QObject>
#include <QString>

// A one-line text field.
class TextField : public QObject {
    Q_OBJECT
public:
    explicit TextField(QObject* parent = nullptr) : QObject(parent) {}

    QString Text() const { return m_text; }
    void SetText(const QString& text)
    {
        if (text == m_text)
            return;
        m_text = text;
        emit changed();
    }

    bool Enabled() const { return m_enabled; }
    void SetEnabled(bool enabled)
    {
        if (enabled == m_enabled)
            return;
        m_enabled = enabled;
        emit changed();
    }

signals:
    void changed();

private:
    QString m_text;
    bool m_enabled = true;
};
