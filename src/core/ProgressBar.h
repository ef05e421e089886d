#pragma once

#include <QObject>

// A progress bar. A Maximum of 0 makes it an indefinite ("busy") bar.
class ProgressBar : public QObject {
    Q_OBJECT
public:
    explicit ProgressBar(int maximum = 100, QObject* parent = nullptr);

    int Maximum() const { return m_maximum; }
    void SetMaximum(int maximum);
    int Value() const { return m_value; }
    void SetValue(int value);
    void Refresh() { emit refreshRequested(); }

signals:
    void changed();
    void refreshRequested();

private:
    int m_maximum;
    int m_value = 0;
};
