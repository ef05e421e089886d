#pragma once

#include "FTPSessionClass.h"
#include "FTPStatusClass.h"
#include "FtpServers.h"
#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "StatusSink.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

// Runs the event loop until done() or the bound, sleeping only until the next
// event (QTest::qWaitFor naps 10 ms between passes, which would pace an upload
// that sends one block per completion event).
inline bool PumpUntil(const std::function<bool()>& done, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    QTimer wake;
    wake.start(20);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return done();
}

// Random bytes that a seed makes again.
inline QByteArray Bytes(qsizetype size, quint32 seed = 7)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

// Makes the folders on the way.
inline bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Globals' lines as the main window's log shows them, without a window; every
// post, shown or not, counts as activity.
struct LogSink : StatusSink {
    QStringList lines;
    int activity = 0;
    void StatusPosted(const QString& text, bool shown) override
    {
        ++activity;
        if (shown)
            lines << text;
    }
};

// A status sink that keeps every report, in order, as "Kind: text", and then
// does what the application's sink does.
class RecordingStatus : public FTPStatusClass {
public:
    using FTPStatusClass::FTPStatusClass;

    QStringList reports, ends; // ends: the Error and Successful reports
    // Runs first in every report, with its kind ("Progress", "Error", ...).
    std::function<void(const QString&)> onReport;

    void Error_FTP(const QString& text) override { Note("Error", text, true), FTPStatusClass::Error_FTP(text); }
    void Successful_FTP(const QString& text) override { Note("Successful", text, true), FTPStatusClass::Successful_FTP(text); }
    void Response_FTP(const QString& text) override { Note("Response", text), FTPStatusClass::Response_FTP(text); }
    void Status_FTP(const QString& text) override { Note("Status", text), FTPStatusClass::Status_FTP(text); }
    void Progress_FTP(qint64) override { onReport ? onReport(QStringLiteral("Progress")) : void(); }

    void Note(const char* kind, const QString& text, bool end = false)
    {
        if (onReport)
            onReport(QLatin1String(kind));
        reports << QLatin1String(kind) + QStringLiteral(": ") + text;
        if (end)
            ends << reports.constLast();
    }
};

// The application's side of a session: shared state, a log that receives the
// status lines, and a session whose reports are recorded.
class FtpSessionHarness {
public:
    ManualClock clock;
    LogSink log;
    Globals globals;
    FTPSessionClass session{globals, clock};
    RecordingStatus* status = nullptr;

    FtpSessionHarness()
    {
        globals.AttachSink(&log);
        globals.m_Verbose = true;
        session.SetLoginInfo(QStringLiteral("127.0.0.1"), QStringLiteral("anonymous"), QStringLiteral("guest@example.org"));
        auto recorder = std::make_unique<RecordingStatus>(globals, &session);
        status = recorder.get();
        session.FTPStatusInstance = std::move(recorder);
    }

    void LogonTo(quint16 port)
    {
        session.CommandPort = port;
        session.Logon();
    }

    // Starts an operation and returns the end it reports, waiting at most 10 s for it.
    QString EndOf(const std::function<void()>& operation)
    {
        const qsizetype before = status->ends.size();
        operation();
        (void)PumpUntil([&] { return status->ends.size() > before; }, 10000);
        return status->ends.value(before, QStringLiteral("(no end)"));
    }
    // Waits at most 10 s until this many ends were reported, and returns them all.
    QStringList Ends(qsizetype count)
    {
        (void)PumpUntil([&] { return status->ends.size() >= count; }, 10000);
        return status->ends;
    }
    // Runs every event posted so far.
    static void Settle()
    {
        auto ran = std::make_shared<bool>(false);
        QMetaObject::invokeMethod(qApp, [ran] { *ran = true; }, Qt::QueuedConnection);
        (void)PumpUntil([ran] { return *ran; }, 5000);
    }
};
