#pragma once

#include <QObject>
#include <QString>

// A push button: caption and enabled state. Push() is what a click does;
// a disabled button ignores it, which is how a long operation keeps itself
// from being started twice while it pumps the event loop.
class PushButton : public QObject {
    Q_OBJECT
public:
    explicit PushButton(QString caption = {}, bool enabled = true, QObject* parent = nullptr);

    QString Caption() const { return m_caption; }
    void SetCaption(const QString& caption);
    bool Enabled() const { return m_enabled; }
    void SetEnabled(bool enabled);
    bool Push();

signals:
    void changed();
    void Action();

private:
    QString m_caption;
    bool m_enabled;
};
