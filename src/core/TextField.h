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

signals:
    void changed();

private:
    QString m_text;
};
