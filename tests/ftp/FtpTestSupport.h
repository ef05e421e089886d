#pragma once

#include "FTPSessionClass.h"
#include "FTPStatusClass.h"
#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "ScriptedPlatformServices.h"
#include "StatusLog.h"
#include "Window1Base.h"

#include <QCoreApplication>
#include <QTest>

#include <functional>

// A status sink that keeps every report as "Kind: text", and the ends (successes and errors)
// apart, then does what the application's sink does.
class RecordingStatus : public FTPStatusClass {
public:
    using FTPStatusClass::FTPStatusClass;
    QStringList reports;
    QStringList ends;

    void Error_FTP(const QString& text) override { End(QStringLiteral("Error: ") + text); FTPStatusClass::Error_FTP(text); }
    void Successful_FTP(const QString& t) override { End(QStringLiteral("Successful: ") + t); FTPStatusClass::Successful_FTP(t); }
    void Response_FTP(const QString& t) override { reports << QStringLiteral("Response: ") + t; FTPStatusClass::Response_FTP(t); }
    void Status_FTP(const QString& text) override { reports << QStringLiteral("Status: ") + text; FTPStatusClass::Status_FTP(text); }

private:
    void End(const QString& report) { reports << report; ends << report; }
};

// The application's side of a session: shared state, a main window whose log receives the
// status lines, and a session whose reports are recorded.
class FtpSessionHarness {
public:
    ManualClock clock;
    Globals globals;
    ScriptedPlatformServices platform;
    Window1Base window{globals, clock, platform};
    FTPSessionClass session{globals, clock};
    RecordingStatus* status = new RecordingStatus(globals, &session);

    FtpSessionHarness()
    {
        globals.m_Verbose = true;
        session.FTPStatusInstance.reset(status);
    }

    void LogonTo(quint16 port)
    {
        session.SetLoginInfo(QStringLiteral("127.0.0.1"), QStringLiteral("anonymous"), QStringLiteral("guest@example.org"));
        session.CommandPort = port;
        session.Logon();
    }
    // Starts an operation and returns the end it reports, waiting at most 10 s for it.
    QString EndOf(const std::function<void()>& operation)
    {
        const qsizetype before = status->ends.size();
        operation();
        (void)QTest::qWaitFor([&] { return status->ends.size() > before; }, 10000);
        return status->ends.value(before, QStringLiteral("(no end)"));
    }
    // Waits at most 10 s until this many ends were reported, and returns them all.
    QStringList Ends(qsizetype count)
    {
        (void)QTest::qWaitFor([&] { return status->ends.size() >= count; }, 10000);
        return status->ends;
    }
    QStringList LogLines() const { return StatusLinesOf(window.StatusField); }
    // Runs every event posted so far.
    static void Settle()
    {
        auto ran = std::make_shared<bool>(false);
        QMetaObject::invokeMethod(qApp, [ran] { *ran = true; }, Qt::QueuedConnection);
        (void)QTest::qWaitFor([ran] { return *ran; }, 5000);
    }
};
