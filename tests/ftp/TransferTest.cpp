#include "FtpServers.h"
#include "FtpTestSupport.h"
#include "QtPrinters.h"

#include <QDir>
#include <QRandomGenerator>
#include <QSslCertificate>

#include <gtest/gtest.h>

#include <sys/socket.h>

namespace {

QByteArray Bytes(qsizetype size, quint32 seed = 7)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "(missing)";
}

class TransferHarness : public FtpSessionHarness {
protected:
    QTemporaryDir local;

    TransferHarness() { session.LocalDirectory = local.path() + '/'; }
    QString Local(const QString& name) const { return local.filePath(name); }
    QString Move(const QString& name, const std::function<void()>& start)
    {
        session.AddFileName(name);
        return EndOf(start);
    }
    QString Move(const QString& name, void (FTPSessionClass::*operation)() = &FTPSessionClass::GetSingleFile)
    {
        return Move(name, [&] { (session.*operation)(); });
    }
};

const QString kDone = QStringLiteral("Successful: File Transfer Complete.");

// Parameters: vsftpd (else pyftpdlib), passive mode (else active), AUTH TLS.
class RealTransferTest : public ::testing::TestWithParam<std::tuple<bool, bool, bool>>, protected TransferHarness {
protected:
    const bool isVsftpd = std::get<0>(GetParam());
    RealFtpServer server{isVsftpd ? RealFtpServer::Kind::Vsftpd : RealFtpServer::Kind::Pyftpdlib};
    QString Served(const QString& name) const { return server.IncomingPath() + '/' + name; }
};

TEST_P(RealTransferTest, FilesAndListingsBothWays)
{
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    session.PassiveMode = std::get<1>(GetParam());
    session.FTPS = std::get<2>(GetParam());
    session.TrustedCertificates = QSslCertificate::fromPath(server.CertificatePath());
    const QByteArray big = Bytes(3 * 1024 * 1024 + 17);
    ASSERT_TRUE(WriteFile(Served("big.bin"), big) && WriteFile(Served("empty.bin"), {}));
    LogonTo(server.Port());
    ASSERT_EQ(EndOf([] {}), QLatin1String("Successful: Connected to Corvane server."));
    session.ServerDirectory = QStringLiteral("/incoming");
    ASSERT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Successful: Directory Change Complete."));

    // An earlier file of the name is replaced only by the complete new one.
    ASSERT_TRUE(WriteFile(Local("big.bin"), "old"));
    EXPECT_EQ(Move("big.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("big.bin")), big);
    EXPECT_EQ(Move("empty.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("empty.bin")), QByteArray());
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"big.bin", "empty.bin"}));

    // What an interrupted fetch kept is resumed from its offset (pyftpdlib
    // opens with 125, which the restart refuses).
    if (isVsftpd) {
        ASSERT_TRUE(WriteFile(Local(".big.bin.part"), big.left(1000000)) && QFile::remove(Local("big.bin")));
        EXPECT_EQ(Move("big.bin", &FTPSessionClass::RestartGetSingleFile), kDone);
        EXPECT_EQ(ReadFile(Local("big.bin")), big);
    }

    // A file of exactly one block, and an upload resumed after 1234 bytes.
    const QByteArray block = Bytes(session.SendBufferSize, 9);
    ASSERT_TRUE(WriteFile(Local("block.bin"), block) && WriteFile(Served("big-up.bin"), big.left(1234)));
    QFile(Served("big-up.bin")).setPermissions(QFileDevice::Permissions(0x6666)); // writable by vsftpd's user
    EXPECT_EQ(Move("block.bin", &FTPSessionClass::PutSingleFile), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadFile(Served("block.bin")) == block; }, 5000));
    ASSERT_TRUE(QFile::rename(Local("big.bin"), Local("big-up.bin")));
    EXPECT_EQ(Move("big-up.bin", &FTPSessionClass::RestartPutSingleFile), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadFile(Served("big-up.bin")) == big; }, 5000));

    for (int form = 0; form < (isVsftpd ? 4 : 3); ++form) { // LIST, LIST -a, NLST, NLST -a (not in pyftpdlib)
        session.UseNameList = form >= 2;
        session.ShowInvisible = form % 2;
        EXPECT_EQ(EndOf([&] { session.GetDirList(); }), QLatin1String("Successful: The file list has been transferred."));
        EXPECT_TRUE(session.DirectoryFileList.contains(form >= 2 ? "\nbig.bin\r" : " big.bin\r")
                    || session.DirectoryFileList.startsWith("big.bin\r")) << session.DirectoryFileList.toStdString();
    }
    for (const char* command : {"SIZE big-up.bin", "REST 1234", "LIST", "LIST -a", "NLST", isVsftpd ? "REST 1000000" : "NLST"})
        EXPECT_TRUE(server.CommandsSeen().contains(QLatin1String(command))) << command;

    // An abort mid-transfer leaves no file under the name.
    bool aborting = false;
    status->onReport = [&](const QString& kind) {
        if (kind == "Progress" && !std::exchange(aborting, true))
            QTimer::singleShot(0, [&] { session.AbortTransfer(); });
    };
    ASSERT_TRUE(WriteFile(Served("huge.bin"), Bytes(64 * 1024 * 1024)));
    EXPECT_NE(Move("huge.bin"), kDone);
    EXPECT_FALSE(QFileInfo::exists(Local("huge.bin")));

    // The self-connecting listing logs on again, lists /incoming and logs off.
    EXPECT_EQ(EndOf([&] { session.StartGetDirList(); }), QLatin1String("Successful: The file list has been transferred."));
    EXPECT_TRUE(session.DirectoryFileList.contains("block.bin")) << session.DirectoryFileList.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Servers, RealTransferTest, ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Values(false)));
INSTANTIATE_TEST_SUITE_P(Tls, RealTransferTest, ::testing::Combine(::testing::Values(true), ::testing::Bool(), ::testing::Values(true)));

// A passive data port for the scripted peer: once the client connects it
// waits, sends its bytes, then closes in order or, on Reset(), with a reset.
class DataPeer {
public:
    QTcpServer listener;
    QPointer<QTcpSocket> peer;

    DataPeer(const QByteArray& bytes, int delayMs, bool close = true)
    {
        listener.listen(QHostAddress::LocalHost);
        QObject::connect(&listener, &QTcpServer::newConnection, [=, this] {
            peer = listener.nextPendingConnection();
            QTimer::singleShot(delayMs, peer, [=, this] {
                peer->write(bytes);
                if (close)
                    peer->disconnectFromHost();
            });
        });
    }
    void Reset()
    {
        const linger hard{1, 0};
        ::setsockopt(int(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        peer->abort();
    }
    // A 227 that names a foreign address: the client must use the control peer's.
    QByteArray Reply227() const
    {
        const quint16 port = listener.serverPort();
        return QStringLiteral("227 Entering Passive Mode (10,0,0,5,%1,%2).\r\n").arg(port / 256).arg(port % 256).toLatin1();
    }
};

class ScriptedTransferTest : public ::testing::Test, protected TransferHarness {
protected:
    ScriptedFtpPeer server;

    void SetUp() override
    {
        server.replies = {"220 Ready\r\n", "331 Password\r\n", "230 In\r\n"};
        LogonTo(server.Port());
        ASSERT_EQ(EndOf([] {}), QLatin1String("Successful: Connected to Corvane server."));
    }
    // The replies to PASV and TYPE I, then the given ones, line by line.
    void ScriptFront(const DataPeer& data, std::initializer_list<QByteArray> replies)
    {
        server.replies << data.Reply227() << "200 Type\r\n" << replies;
    }
    // A reply the server sends on its own after a while, as when the data connection has closed.
    void SendLater(const QByteArray& reply) { QTimer::singleShot(500, &server, [this, reply] { server.Send(reply); }); }
};

TEST_F(ScriptedTransferTest, EndOfFileWaitsForBothTheReplyAndTheDataClose)
{
    // Names from the server are refused unless plain, and nothing is written.
    for (const char* name : {"../evil", "a/b", "a\\b", "..", ".", "", "bad\x01name", "bad\x7fname"}) {
        session.FTPSessionType = "GetSingleFile";
        EXPECT_EQ(EndOf([&] { EXPECT_FALSE(session.DataSocket->PutFileName(name)) << name; }),
                  "Error: Error writing local file: " + QString(name));
    }
    EXPECT_EQ(QDir(local.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{});
    EXPECT_EQ(QDir(local.path() + "/..").entryList({"evil"}), QStringList{});

    const QByteArray bytes = Bytes(100000);
    DataPeer late(bytes, 300);
    ScriptFront(late, {"125 Go\r\n226 Done\r\n", ""});
    SendLater("200 Ok\r\n"); // to the NOOP, once the data connection has closed
    EXPECT_EQ(Move("a.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("a.bin")), bytes);

    DataPeer early(bytes, 100);
    ScriptFront(early, {"150 Go\r\n"});
    SendLater("226 Done\r\n");
    EXPECT_EQ(Move("b.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("b.bin")), bytes);
    EXPECT_EQ(server.received.mid(2), (QStringList{"PASV", "TYPE I", "RETR a.bin", "NOOP", "PASV", "TYPE I", "RETR b.bin"}));

    server.replies << "227 Entering Passive Mode (127,0,0,1,300,1).\r\n";
    EXPECT_EQ(Move("c.bin"), "Error: Error: The server's passive mode reply names no valid port: "
                             "227 Entering Passive Mode (127,0,0,1,300,1).");
    // Deletion takes a plain name inside the folder, or an item where it is.
    session.DeleteLocalFile("../" + QDir(local.path()).dirName() + "/a.bin");
    session.DeleteLocalFile("b.bin");
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files), QStringList{"a.bin"});
    session.DeleteLocalFile(QFileInfo(Local("a.bin")));
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files), QStringList{});
}

TEST_F(ScriptedTransferTest, InterruptedTransfersKeepTheOldFileAndResume)
{
    const QByteArray bytes = Bytes(5000);
    ASSERT_TRUE(WriteFile(Local("a.bin"), "complete old file"));
    DataPeer closesEarly(bytes.left(1000), 100);
    ScriptFront(closesEarly, {"150 Go\r\n"});
    SendLater("426 Closed early\r\n");
    EXPECT_TRUE(Move("a.bin").startsWith("Error: Error: 426 Closed early"));

    DataPeer resets(bytes.left(1000), 100, false);
    ScriptFront(resets, {"150 Go\r\n"});
    EXPECT_EQ(Move("a.bin", [&] {
                  session.GetSingleFile();
                  ASSERT_TRUE(QTest::qWaitFor([&] { return session.DataSocket->ByteCount == 1000; }, 5000));
                  resets.Reset();
              }),
              "Error: Error while receiving the file: 110");
    EXPECT_EQ(ReadFile(Local("a.bin")), "complete old file");

    DataPeer rest(bytes.mid(1000), 100);
    ScriptFront(rest, {"350 Rest\r\n", "150 Go\r\n"});
    SendLater("226 Done\r\n");
    EXPECT_EQ(Move("a.bin", &FTPSessionClass::RestartGetSingleFile), kDone);
    EXPECT_EQ(ReadFile(Local("a.bin")), bytes);

    // In the restart machine only 150 opens the transfer.
    DataPeer silent({}, 0);
    ScriptFront(silent, {"350 Rest\r\n", "125 Go\r\n"});
    EXPECT_TRUE(Move("a.bin", &FTPSessionClass::RestartGetSingleFile).startsWith("Error: Error: 125 Go"));

    // A SIZE reply with more than the size ends an upload restart.
    ASSERT_TRUE(WriteFile(Local("up.bin"), Bytes(3000)));
    DataPeer idle({}, 0, false);
    server.replies << "200 Type\r\n" << idle.Reply227() << "213 1234 extra\r\n";
    EXPECT_EQ(Move("up.bin", &FTPSessionClass::RestartPutSingleFile), "Error: Error: 213 1234 extra\n");
    EXPECT_EQ(server.received.mid(2), (QStringList{"PASV", "TYPE I", "RETR a.bin", "PASV", "TYPE I", "RETR a.bin",
                                                   "PASV", "TYPE I", "REST 1000", "RETR a.bin", "PASV", "TYPE I",
                                                   "REST 5000", "RETR a.bin", "TYPE I", "PASV", "SIZE up.bin"}));

    // A data connection that cannot be secured after PROT P ends the fetch.
    session.DataSocket->SetPrivate(true);
    DataPeer plain(bytes, 100);
    ScriptFront(plain, {"150 Go\r\n"});
    EXPECT_EQ(Move("a.bin"), "Error: Error while receiving the file: 108");
    EXPECT_EQ(ReadFile(Local("a.bin")), bytes);
}

TEST(ParseDirListLine, UnixAndDirectoryForms)
{
    // kind: 0 neither, 1 file, 2 directory, 3 link
    const struct { const char *line, *name; int kind; qint64 size; const char *date, *time; } rows[] = {
        {"drwxr-xr-x 2 owner group 4096 Jan 12 09:30 My Folder", "My Folder", 2, 4096, "Jan 12", "09:30"},
        {"-rw-r--r--   1 owner  group   1234 Feb  3  2020 a.hex", "a.hex", 1, 1234, "Feb 3", "2020"},
        {"lrwxrwxrwx 1 owner group 7 Mar 1 12:00 a -> b", "a -> b", 3, 7, "Mar 1", "12:00"},
        {"crw-r--r-- 1 owner group 1 Mar 1 12:00 dev", "dev", 0, 1, "Mar 1", "12:00"},
        {"-rw-r--r-- 1 owner group 99 JAN 5 10:00 x  y", "x y", 1, 99, "JAN 5", "10:00"},
        {"-rw-r--r-- 1 May group 99 Jan 5 10:00 x", "Jan 5 10:00 x", 1, 0, "May group", "99"},
        {"-rw-r--r-- 1 owner group 99 Jan 5 10:00", "", 0, 0, "", ""},
        {"01-02-20  10:00AM       <DIR>          Old Stuff", "Old Stuff", 2, 0, "01-02-20", "10:00AM"},
        {"12-31-2019  11:59PM            1234 a.hex", "a.hex", 1, 1234, "12-31-2019", "11:59PM"},
        {"01-02-20 10:00AM <dir> x", "x", 2, 0, "01-02-20", "10:00AM"},
        {"total 12", "", 0, 0, "", ""},
        {"", "", 0, 0, "", ""},
        {"name only from nlst", "", 0, 0, "", ""},
    };
    for (const auto& row : rows) {
        const FTPParsedDirListLineClass r = FTPSessionClass::ParseDirListLine(row.line);
        EXPECT_EQ(r.Name + '|' + r.ModDate + '|' + r.ModTime, QString(row.name) + '|' + row.date + '|' + row.time);
        EXPECT_EQ(std::tuple(r.IsFile, r.IsDir, r.Size), std::tuple(row.kind % 2 == 1, row.kind >= 2, row.size)) << row.line;
    }
    EXPECT_EQ(FTPSessionClass::ParseDirListLine(rows[0].line).Permissions, "rwxr-xr-x");
    EXPECT_EQ(FTPSessionClass::Squeeze("a  b\t\tc  ", " \t"), "a b\tc ");
}

// A listing fills the walk's tree with plain names only; the walk takes them from the end.
TEST(ParseDirectoryList, FillsTheTreeThatTheWalkTakesFromTheEnd)
{
    FtpSessionHarness h;
    h.session.DirList = {std::make_shared<FTPDirectoryClass>("/top", "")};
    h.session.CurrentWorkingDirectory = "/top";
    FTPDataSocket(&h.session).ParseDirectoryList(
        "drwxr-xr-x 2 o g 4096 Jan 12 09:30 a\r\n-rw-r--r-- 1 o g 5 Jan 12 09:30 f1\ndrwxr-xr-x 2 o g 0 Jan 1 09:30 ..\r"
        "-rw-r--r-- 1 o g 5 Jan 12 09:30 x/y\r\ndrwxr-xr-x 2 o g 4096 Jan 12 09:30 b\n-rw-r--r-- 1 o g 5 Jan 12 09:30 f2");
    ASSERT_EQ(h.session.DirList.size(), 3);
    FTPDirectoryClass& top = *h.session.DirList.first();
    EXPECT_EQ(h.session.DirList.last()->GetName() + '<' + h.session.DirList.last()->GetParentDirectoryName(), "/top/b</top");
    EXPECT_EQ(top.Files, (QStringList{"f1", "f2"}));
    top.DeleteFile("f2");
    EXPECT_EQ(top.GetNextFileName() + QString::number(top.GetFileCount()), "f10");
    EXPECT_EQ(top.GetCurrentSubDirectoryName() + QString::number(top.GetSubDirectoryCount()), "/top/b1");
    QStringList walked;
    for (int i = 0; i < 3; ++i)
        walked << top.GetNextSubDirectoryName();
    EXPECT_EQ(walked, (QStringList{"/top/b", "/top/a", ""}));
    top.DeleteSubDirectory("/top/b");
    EXPECT_EQ(top.SubDirectories, QStringList{"/top/a"});
}

TEST(SessionLifetime, DeletedInsideAnyOfItsReports)
{
    RealFtpServer server(RealFtpServer::Kind::Pyftpdlib);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    ASSERT_TRUE(WriteFile(server.IncomingPath() + "/../f.bin", Bytes(300000)));
    QTemporaryDir local;
    ManualClock clock;
    Globals globals;
    bool deleted = true;
    for (int at = 1; deleted && at < 500; ++at) {
        auto session = std::make_unique<FTPSessionClass>(globals, clock);
        int reports = 0;
        // At the chosen report the application deletes the session in the pass of
        // the event loop the report gives; a meter's progress report pumps too.
        auto recorder = std::make_unique<RecordingStatus>(globals, session.get());
        recorder->onReport = [&](const QString& kind) {
            if (++reports == at)
                QMetaObject::invokeMethod(qApp, [&] { session.reset(); }, Qt::QueuedConnection);
            if (kind == "Progress")
                QCoreApplication::processEvents();
        };
        session->FTPStatusInstance = std::move(recorder);
        session->SetLoginInfo("127.0.0.1", "anonymous", "guest@example.org");
        session->CommandPort = server.Port();
        session->LocalDirectory = local.path() + '/';
        const auto run = [&](void (FTPSessionClass::*operation)()) {
            globals.FTPDone = false;
            ((*session).*operation)();
            return QTest::qWaitFor([&] { return globals.FTPDone || !session; }, 5000) && session;
        };
        session->AddFileName("f.bin");
        deleted = !(run(&FTPSessionClass::Logon) && run(&FTPSessionClass::GetSingleFile)
                    && run(&FTPSessionClass::GetDirList) && run(&FTPSessionClass::Logoff));
        EXPECT_EQ(deleted, session == nullptr) << "at report " << at;
    }
    EXPECT_FALSE(deleted) << "the walk never ran to its end";
}

} // namespace
