#pragma once

#include <QObject>
#include <QString>

// A menu item: its text, enabled state and check mark.
class MenuItem : public QObject {
    Q_OBJECT
public:
    explicit MenuItem(QString text = {}, QObject* parent = nullptr) : QObject(parent), m_text(std::move(text)) {}

    QString Text() const { return m_text; }
    bool Checked() const { return m_checked; }
    void SetChecked(bool checked)
    {
        if (checked == m_checked)
            return;
        m_checked = checked;
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
    void Action();

private:
    QString m_text;
    bool m_checked = false;
    bool m_enabled = true;
};
