#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// Points the per-user configuration and data folders at fresh temporary
// folders for the life of the object, and puts the old values back after.
// Neither folder exists at first: the code under test must create them.
class XdgHomes {
public:
    XdgHomes() : m_config(Save("XDG_CONFIG_HOME")), m_data(Save("XDG_DATA_HOME"))
    {
        qputenv("XDG_CONFIG_HOME", ConfigPath().toUtf8());
        qputenv("XDG_DATA_HOME", DataPath().toUtf8());
    }
    ~XdgHomes()
    {
        Restore("XDG_CONFIG_HOME", m_config);
        Restore("XDG_DATA_HOME", m_data);
    }
    XdgHomes(const XdgHomes&) = delete;
    XdgHomes& operator=(const XdgHomes&) = delete;

    QString ConfigPath() const { return m_root.filePath(QStringLiteral("config")); }
    QString DataPath() const { return m_root.filePath(QStringLiteral("data")); }
    QString PrefsPath() const { return ConfigPath() + QStringLiteral("/VexilUtilPrefs"); }

    void WritePrefs(const QByteArray& bytes) const
    {
        QDir().mkpath(ConfigPath());
        QFile file(PrefsPath());
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }
    QByteArray Prefs() const
    {
        QFile file(PrefsPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

private:
    struct Saved {
        bool set;
        QByteArray value;
    };
    static Saved Save(const char* name) { return {qEnvironmentVariableIsSet(name), qgetenv(name)}; }
    static void Restore(const char* name, const Saved& saved)
    {
        if (saved.set)
            qputenv(name, saved.value);
        else
            qunsetenv(name);
    }

    QTemporaryDir m_root;
    Saved m_config;
    Saved m_data;
};
