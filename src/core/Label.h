#pragma once

#include <QObject>
#include <QString>

// A static text control: the model a label widget draws.
class Label : public QObject {
    Q_OBJECT
public:
    explicit Label(QString text = {}, QObject* parent = nullptr);

    QString Text() const { return m_text; }
    void SetText(const QString& text);
    bool Visible() const { return m_visible; }
    void SetVisible(bool visible);

signals:
    void changed();

private:
    QString m_text;
    bool m_visible = true;
};
