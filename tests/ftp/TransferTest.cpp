#include "FtpServers.h"
#include "FtpTestSupport.h"
#include "QtPrinters.h"
#include "ScriptedFtpServer.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

#include <sys/socket.h>

namespace {

QByteArray Bytes(qsizetype size, quint32 seed = 7)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(seed);
    for (char& byte : bytes)
        byte = static_cast<char>(generator.generate());
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
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

class TransferHarness : public FtpSessionHarness {
protected:
    QTemporaryDir local;

    TransferHarness() { session.LocalDirectory = local.path() + '/'; }
    QString Local(const QString& name) const { return local.filePath(name); }
    QString Do(const std::function<void()>& operation)
    {
        operation();
        return WaitForEnd() ? LastEnd() : QStringLiteral("(no end reported)");
    }
    QString Fetch(const QString& name, bool restart = false)
    {
        session.AddFileName(name);
        return Do([&] { restart ? session.RestartGetSingleFile() : session.GetSingleFile(); });
    }
};

const QString kDone = QStringLiteral("Successful: File Transfer Complete.");

struct ServerCase {
    const char* name;
    bool vsftpd;
    bool passive;
};

class RealTransferTest : public ::testing::TestWithParam<ServerCase>, protected TransferHarness {
protected:
    VsftpdServer vsftpd;
    PyftpdlibServer pyftpdlib;
    FtpServerFixture* server = GetParam().vsftpd ? static_cast<FtpServerFixture*>(&vsftpd) : &pyftpdlib;
    QString Served(const QString& name) const { return server->WritablePath() + '/' + name; }
};

TEST_P(RealTransferTest, FilesAndListingsBothWays)
{
    QString error;
    ASSERT_TRUE(server->Start(&error)) << error.toStdString();
    session.PassiveMode = GetParam().passive;
    const QByteArray big = Bytes(3 * 1024 * 1024 + 17);
    ASSERT_TRUE(WriteFile(Served("big.bin"), big) && WriteFile(Served("empty.bin"), {}));
    LogonTo(server->Port());
    ASSERT_EQ(Do([] {}), QLatin1String("Successful: Connected to Corvane server."));
    session.ServerDirectory = QStringLiteral("/incoming");
    ASSERT_EQ(Do([&] { session.ChangeDir(); }), QLatin1String("Successful: Directory Change Complete."));

    // An earlier file of the name is replaced only by the complete new one.
    ASSERT_TRUE(WriteFile(Local("big.bin"), "old"));
    EXPECT_EQ(Fetch("big.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("big.bin")), big);
    EXPECT_EQ(Fetch("empty.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("empty.bin")), QByteArray());
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"big.bin", "empty.bin"}));

    // What an interrupted fetch kept is resumed from its offset (pyftpdlib
    // opens with 125, which the restart refuses).
    if (GetParam().vsftpd) {
        ASSERT_TRUE(WriteFile(Local(".big.bin.part"), big.left(1000000)) && QFile::remove(Local("big.bin")));
        EXPECT_EQ(Fetch("big.bin", true), kDone);
        EXPECT_EQ(ReadFile(Local("big.bin")), big);
    }

    // A file of exactly one block, and an upload resumed after 1234 bytes.
    const QByteArray block = Bytes(session.SendBufferSize, 9);
    ASSERT_TRUE(WriteFile(Local("block.bin"), block) && WriteFile(Served("big-up.bin"), big.left(1234)));
    QFile(Served("big-up.bin")).setPermissions(QFileDevice::Permissions(0x6666)); // writable by vsftpd's user
    session.AddFileName("block.bin");
    EXPECT_EQ(Do([&] { session.PutSingleFile(); }), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadFile(Served("block.bin")) == block; }, 5000));
    ASSERT_TRUE(QFile::rename(Local("big.bin"), Local("big-up.bin")));
    session.AddFileName("big-up.bin");
    EXPECT_EQ(Do([&] { session.RestartPutSingleFile(); }), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadFile(Served("big-up.bin")) == big; }, 5000));

    for (const bool names : {false, true}) {
        for (const bool invisible : {false, !names || GetParam().vsftpd}) { // pyftpdlib has no "NLST -a"
            session.UseNameList = names;
            session.ShowInvisible = invisible;
            EXPECT_EQ(Do([&] { session.GetDirList(); }), QLatin1String("Successful: The file list has been transferred."));
            EXPECT_TRUE(session.DirectoryFileList.contains(names ? "\nbig.bin\r" : " big.bin\r")
                        || session.DirectoryFileList.startsWith("big.bin\r")) << session.DirectoryFileList.toStdString();
        }
    }
    const QStringList seen = server->CommandsSeen();
    EXPECT_EQ(seen.contains("REST 1000000"), GetParam().vsftpd);
    for (const char* command : {"SIZE big-up.bin", "REST 1234", "LIST", "LIST -a", "NLST"})
        EXPECT_TRUE(seen.contains(QLatin1String(command))) << command;

    // An abort mid-transfer leaves no file under the name.
    status->onProgress = [&](qint64) {
        status->onProgress = nullptr;
        QTimer::singleShot(0, [&] { session.AbortTransfer(); });
    };
    ASSERT_TRUE(WriteFile(Served("huge.bin"), Bytes(64 * 1024 * 1024)));
    EXPECT_NE(Fetch("huge.bin"), kDone);
    QTest::qWait(200);
    EXPECT_FALSE(QFileInfo::exists(Local("huge.bin")));
}

INSTANTIATE_TEST_SUITE_P(Servers, RealTransferTest,
                         ::testing::Values(ServerCase{"VsftpdPassive", true, true}, ServerCase{"VsftpdActive", true, false},
                                           ServerCase{"PyftpdlibPassive", false, true},
                                           ServerCase{"PyftpdlibActive", false, false}),
                         [](const ::testing::TestParamInfo<ServerCase>& info) { return std::string(info.param.name); });

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
        if (!peer)
            return;
        const linger hard{1, 0};
        ::setsockopt(int(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        peer->abort();
    }
    // A 227 that names a foreign address: the client must use the control peer's.
    QByteArray Reply227() const
    {
        const quint16 port = listener.serverPort();
        return "227 Entering Passive Mode (10,0,0,5," + QByteArray::number(port >> 8) + ',' + QByteArray::number(port & 0xff) + ").\r\n";
    }
};

class ScriptedTransferTest : public ::testing::Test, protected TransferHarness {
protected:
    ScriptedFtpServer server;

    void SetUp() override
    {
        ASSERT_TRUE(server.Listen());
        server.Send("220 Ready\r\n").Expect("USER anonymous").Send("331 Password\r\n").ExpectPrefix("PASS ").Send("230 In\r\n");
        LogonTo(server.Port());
        ASSERT_EQ(Do([] {}), QLatin1String("Successful: Connected to Corvane server."));
    }
    void TearDown() override { EXPECT_EQ(server.Mismatches(), QStringList{}); }
    ScriptedFtpServer& ScriptFront(const DataPeer& data)
    {
        return server.Expect("PASV").Send(data.Reply227()).Expect("TYPE I").Send("200 Type\r\n");
    }
};

TEST_F(ScriptedTransferTest, EndOfFileWaitsForBothTheReplyAndTheDataClose)
{
    const QByteArray bytes = Bytes(100000);
    DataPeer late(bytes, 300);
    ScriptFront(late).Expect("RETR a.bin").Send("125 Go\r\n226 Done\r\n").Expect("NOOP").Pause(500).Send("200 Ok\r\n");
    EXPECT_EQ(Fetch("a.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("a.bin")), bytes);

    DataPeer early(bytes, 100);
    ScriptFront(early).Expect("RETR b.bin").Send("150 Go\r\n").Pause(500).Send("226 Done\r\n");
    EXPECT_EQ(Fetch("b.bin"), kDone);
    EXPECT_EQ(ReadFile(Local("b.bin")), bytes);
    EXPECT_EQ(server.Received().count("NOOP"), 1);
}

TEST_F(ScriptedTransferTest, InterruptedFetchKeepsTheOldFileAndResumes)
{
    const QByteArray bytes = Bytes(5000);
    ASSERT_TRUE(WriteFile(Local("a.bin"), "complete old file"));
    DataPeer closesEarly(bytes.left(1000), 100);
    ScriptFront(closesEarly).Expect("RETR a.bin").Send("150 Go\r\n").Pause(500).Send("426 Closed early\r\n");
    EXPECT_TRUE(Fetch("a.bin").startsWith("Error: Error: 426 Closed early"));

    DataPeer resets(bytes.left(1000), 100, false);
    ScriptFront(resets).Expect("RETR a.bin").Send("150 Go\r\n");
    session.AddFileName("a.bin");
    session.GetSingleFile();
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.DataSocket->ByteCount == 1000; }, 5000));
    resets.Reset();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), "Error: Error while receiving the file: 110");
    EXPECT_EQ(ReadFile(Local("a.bin")), "complete old file");

    DataPeer rest(bytes.mid(1000), 100);
    server.Expect("PASV").Send(rest.Reply227()).Expect("TYPE I").Send("200 Type\r\n").Expect("REST 1000").Send("350 Rest\r\n");
    server.Expect("RETR a.bin").Send("150 Go\r\n").Pause(500).Send("226 Done\r\n");
    EXPECT_EQ(Fetch("a.bin", true), kDone);
    EXPECT_EQ(ReadFile(Local("a.bin")), bytes);

    // In the restart machine only 150 opens the transfer.
    DataPeer silent({}, 0);
    server.Expect("PASV").Send(silent.Reply227()).Expect("TYPE I").Send("200 Type\r\n").Expect("REST 5000").Send("350 Rest\r\n");
    server.Expect("RETR a.bin").Send("125 Go\r\n");
    EXPECT_TRUE(Fetch("a.bin", true).startsWith("Error: Error: 125 Go"));
}

TEST_F(ScriptedTransferTest, SizeReplyWithExtraFieldsEndsTheRestart)
{
    ASSERT_TRUE(WriteFile(Local("up.bin"), Bytes(3000)));
    DataPeer silent({}, 0, false);
    server.Expect("TYPE I").Send("200 Type\r\n").Expect("PASV").Send(silent.Reply227());
    server.Expect("SIZE up.bin").Send("213 1234 extra\r\n");
    session.AddFileName("up.bin");
    EXPECT_EQ(Do([&] { session.RestartPutSingleFile(); }), "Error: Error: 213 1234 extra\n");
}

TEST_F(ScriptedTransferTest, ReceivedNamesStayInsideTheFolder)
{
    for (const char* name : {"../evil", "a/b", "a\\b", "..", ".", "", "bad\x01name", "bad\x7fname"}) {
        session.FTPSessionType = "GetSingleFile";
        EXPECT_FALSE(session.DataSocket->PutFileName(name)) << name;
        EXPECT_EQ(status->Ends().last(), "Error: Error writing local file: " + QString(name));
    }
    EXPECT_EQ(QDir(local.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{});
    EXPECT_EQ(QDir(local.path() + "/..").entryList({"evil"}), QStringList{});
}

TEST(ParseDirListLine, UnixAndDirectoryForms)
{
    const struct {
        const char* line;
        const char* name;
        int kind; // 0 neither, 1 file, 2 directory, 3 link
        qint64 size;
        const char* date;
        const char* time;
    } rows[] = {
        {"drwxr-xr-x 2 owner group 4096 Jan 12 09:30 My Folder", "My Folder", 2, 4096, "Jan 12", "09:30"},
        {"-rw-r--r--   1 owner  group   1234 Feb  3  2020 a.hex", "a.hex", 1, 1234, "Feb 3", "2020"},
        {"lrwxrwxrwx 1 owner group 7 Mar 1 12:00 a -> b", "a -> b", 3, 7, "Mar 1", "12:00"},
        {"crw-r--r-- 1 owner group 1 Mar 1 12:00 dev", "dev", 0, 1, "Mar 1", "12:00"},
        {"-rw-r--r-- 1 owner group 99 JAN 5 10:00 x  y", "x y", 1, 99, "JAN 5", "10:00"},
        {"-rw-r--r-- 1 May group 99 Jan 5 10:00 x", "Jan 5 10:00 x", 1, 0, "May group", "99"},
        {"-rw-r--r-- 1 owner group 99 Jan 5 10:00", "", 0, 0, "", ""},
        {"-rw-r--r-- 1 owner group 99 Jan", "", 0, 0, "", ""},
        {"01-02-20  10:00AM       <DIR>          Old Stuff", "Old Stuff", 2, 0, "01-02-20", "10:00AM"},
        {"12-31-2019  11:59PM            1234 a.hex", "a.hex", 1, 1234, "12-31-2019", "11:59PM"},
        {"01-02-20 10:00AM <dir> x", "x", 2, 0, "01-02-20", "10:00AM"},
        {"01-02-20 10:00AM many x", "", 0, 0, "", ""},
        {"total 12", "", 0, 0, "", ""},
        {"", "", 0, 0, "", ""},
        {"name only from nlst", "", 0, 0, "", ""},
    };
    for (const auto& row : rows) {
        const FTPParsedDirListLineClass record = FTPSessionClass::ParseDirListLine(row.line);
        EXPECT_EQ(record.Name, row.name) << row.line;
        EXPECT_EQ(record.IsFile, row.kind % 2 == 1) << row.line;
        EXPECT_EQ(record.IsDir, row.kind >= 2) << row.line;
        EXPECT_EQ(record.Size, row.size) << row.line;
        EXPECT_EQ(record.ModDate, row.date) << row.line;
        EXPECT_EQ(record.ModTime, row.time) << row.line;
    }
    EXPECT_EQ(FTPSessionClass::ParseDirListLine(rows[0].line).Permissions, "rwxr-xr-x");
    EXPECT_EQ(FTPSessionClass::Squeeze("a  b\t\tc  ", " \t"), "a b\tc ");
}

TEST(ParseDirectoryList, AnyLineEndGivesTheSameTree)
{
    ManualClock clock;
    Globals globals;
    FTPSessionClass session(globals, clock);
    FTPDataSocket data(&session);
    session.CurrentWorkingDirectory = "/";
    const QString lines[] = {"drwxr-xr-x 2 o g 1 Jan 1 2020 sub", "-rw-r--r-- 1 o g 5 Jan 1 2020 f.hex",
                             "drwxr-xr-x 2 o g 1 Jan 1 2020 ..", "-rw-r--r-- 1 o g 5 Jan 1 2020 ../../x",
                             "lrwxrwxrwx 1 o g 5 Jan 1 2020 l -> /etc", QString(70000, 'z')};
    for (const char* end : {"\r\n", "\n", "\r"}) {
        session.DirList = {std::make_shared<FTPDirectoryClass>("/", "")};
        data.ParseDirectoryList(QStringList(std::begin(lines), std::end(lines)).join(end));
        ASSERT_EQ(session.DirList.size(), 2) << end;
        EXPECT_EQ(session.DirList[0]->SubDirectories, QStringList{"//sub"});
        EXPECT_EQ(session.DirList[0]->Files, QStringList{"f.hex"});
        EXPECT_EQ(session.DirList[1]->GetParentDirectoryName(), "/");
    }
}

// Reports that, at the chosen one, have the application delete the session in
// the event-loop pass the report gives; a meter's progress report pumps too.
class DeletingStatus : public FTPStatusClass {
public:
    DeletingStatus(Globals& globals, std::function<void()> report) : FTPStatusClass(globals), m_report(std::move(report)) {}
    void Error_FTP(const QString& text) override { m_report(), FTPStatusClass::Error_FTP(text); }
    void Successful_FTP(const QString& text) override { m_report(), FTPStatusClass::Successful_FTP(text); }
    void Response_FTP(const QString& text) override { m_report(), FTPStatusClass::Response_FTP(text); }
    void Status_FTP(const QString& text) override { m_report(), FTPStatusClass::Status_FTP(text); }
    void Progress_FTP(qint64) override { m_report(), QCoreApplication::processEvents(); }

private:
    std::function<void()> m_report;
};

TEST(SessionLifetime, DeletedInsideAnyOfItsReports)
{
    PyftpdlibServer server;
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    ASSERT_TRUE(WriteFile(server.WritablePath() + "/f.bin", Bytes(300000)));
    QTemporaryDir local;
    ManualClock clock;
    Globals globals;
    bool deleted = true;
    for (int at = 1; deleted && at < 500; ++at) {
        auto session = std::make_unique<FTPSessionClass>(globals, clock);
        int reports = 0;
        session->FTPStatusInstance = std::make_unique<DeletingStatus>(globals, [&] {
            if (++reports == at)
                QMetaObject::invokeMethod(qApp, [&] { session.reset(); }, Qt::QueuedConnection);
        });
        session->SetLoginInfo("127.0.0.1", "anonymous", "guest@example.org");
        session->CommandPort = server.Port();
        session->LocalDirectory = local.path() + '/';
        session->ServerDirectory = "/incoming";
        const auto run = [&](void (FTPSessionClass::*operation)()) {
            globals.FTPDone = false;
            if (session)
                ((*session).*operation)();
            return QTest::qWaitFor([&] { return globals.FTPDone || !session; }, 5000) && session;
        };
        session->AddFileName("f.bin");
        deleted = !(run(&FTPSessionClass::Logon) && run(&FTPSessionClass::ChangeDir) && run(&FTPSessionClass::GetSingleFile)
                    && run(&FTPSessionClass::GetDirList) && run(&FTPSessionClass::Logoff));
        EXPECT_EQ(deleted, session == nullptr) << "at report " << at;
    }
    EXPECT_FALSE(deleted) << "the walk never ran to its end";
}

} // namespace
