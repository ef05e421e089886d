#include "FtpTestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QSslCertificate>

#include <sys/socket.h>

namespace {

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

// Every folder below root as "path/", every file as "path" and a digest of its bytes.
QStringList Tree(const QString& root)
{
    QStringList tree;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        const QString path = QDir(root).relativeFilePath(info.filePath());
        tree << (info.isDir() ? path + '/' : path + ' ' + QCryptographicHash::hash(FileBytes(info.filePath()), QCryptographicHash::Md5).toHex());
    }
    tree.sort();
    return tree;
}

// Parameters: vsftpd (else pyftpdlib), passive mode (else active), AUTH TLS.
class RealServerTest : public ::testing::TestWithParam<std::tuple<bool, bool, bool>>, protected TransferHarness {
protected:
    const bool isVsftpd = std::get<0>(GetParam());
    RealFtpServer server{isVsftpd ? RealFtpServer::Kind::Vsftpd : RealFtpServer::Kind::Pyftpdlib};

    void SetUp() override
    {
        QString error;
        ASSERT_TRUE(server.Start(&error)) << error.toStdString();
        session.PassiveMode = std::get<1>(GetParam());
        session.FTPS = std::get<2>(GetParam());
    }
    QString Served(const QString& name) const { return server.IncomingPath() + '/' + name; }
    std::string Run(const QString& serverDirectory, const QString& localDirectory, void (FTPSessionClass::*operation)())
    {
        session.ServerDirectory = serverDirectory;
        session.LocalDirectory = localDirectory;
        session.CommandPort = server.Port();
        return EndOf([&] { (session.*operation)(); }).toStdString();
    }
};

TEST_P(RealServerTest, OperationsFilesAndListings)
{
    if (session.FTPS) {
        // A certificate the client does not trust ends the log-on, once, before the user name is sent.
        const QString end = EndOf([&] { LogonTo(server.Port()); });
        EXPECT_TRUE(end.startsWith("Error: Error: 1")) << end.toStdString();
        const QPointer<FTPCommandSocket> socket = session.CommandSocket;
        ASSERT_TRUE(QTest::qWaitFor([&] { return socket && socket->state() == QAbstractSocket::UnconnectedState; }, 5000));
        Settle();
        EXPECT_EQ(status->ends.size(), 1);
        EXPECT_EQ(server.CommandsSeen(), QStringList{"AUTH TLS"});
        session.TrustedCertificates = QSslCertificate::fromPath(server.CertificatePath());
    }
    const QByteArray big = Bytes(3 * 1024 * 1024 + 17);
    ASSERT_TRUE(WriteFile(Served("big.bin"), big) && WriteFile(Served("empty.bin"), {}) && WriteFile(Served("v1.hex"), {}));
    ASSERT_EQ(EndOf([&] { LogonTo(server.Port()); }), QLatin1String("Successful: Connected to Corvane server."));
    ASSERT_EQ(session.CommandSocket->SSLConnected(), session.FTPS);
    session.ServerDirectory = "/incoming";
    ASSERT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Successful: Directory Change Complete."));

    // An earlier file of the name is replaced only by the complete new one.
    ASSERT_TRUE(WriteFile(Local("big.bin"), "old"));
    EXPECT_EQ(Move("big.bin"), kDone);
    EXPECT_EQ(FileBytes(Local("big.bin")), big);
    EXPECT_EQ(Move("empty.bin"), kDone);
    EXPECT_EQ(FileBytes(Local("empty.bin")), QByteArray());
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"big.bin", "empty.bin"}));

    // What an interrupted fetch kept is resumed from its offset (pyftpdlib
    // opens with 125, which the restart refuses).
    if (isVsftpd) {
        ASSERT_TRUE(WriteFile(Local(".big.bin.part"), big.left(1000000)) && QFile::remove(Local("big.bin")));
        EXPECT_EQ(Move("big.bin", &FTPSessionClass::RestartGetSingleFile), kDone);
        EXPECT_EQ(FileBytes(Local("big.bin")), big);
    }

    // A file of exactly one block, and an upload resumed after 1234 bytes.
    const QByteArray block = Bytes(session.SendBufferSize, 9);
    ASSERT_TRUE(WriteFile(Local("block.bin"), block) && WriteFile(Served("big-up.bin"), big.left(1234)));
    QFile(Served("big-up.bin")).setPermissions(QFileDevice::Permissions(0x6666)); // writable by vsftpd's user
    EXPECT_EQ(Move("block.bin", &FTPSessionClass::PutSingleFile), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return FileBytes(Served("block.bin")) == block; }, 5000));
    ASSERT_TRUE(QFile::rename(Local("big.bin"), Local("big-up.bin")));
    EXPECT_EQ(Move("big-up.bin", &FTPSessionClass::RestartPutSingleFile), kDone);
    EXPECT_TRUE(QTest::qWaitFor([&] { return FileBytes(Served("big-up.bin")) == big; }, 5000));
    EXPECT_TRUE(server.CommandsSeen().contains("REST 1234"));

    // One-command operations; last, as an unused passive data connection spoils vsftpd's next fetch.
    const struct { std::function<void()> start; const char* end; } operations[] = {
        {[&] { session.ServerDirectory = "/incoming/made"; session.MakeDir(); }, "Successful: Directory Created."},
        {[&] { session.RemoveDir(); }, "Successful: Empty Directory Removed."},
        {[&] { session.ServerDirectory = "/incoming"; session.ChangeDir(); }, "Successful: Directory Change Complete."},
        {[&] { session.GetWorkingDir(); }, "Successful: The working directory has been transferred."},
        {[&] { session.AddFileName("v2.hex"); session.AddFileName("v1.hex"); session.RenameSingleFile(); }, "Successful: File Rename Complete."},
        {[&] { session.AddFileName("v2.hex"); session.DeleteSingleFile(); }, "Successful: File has been deleted."},
        {[&] { session.GetSystemInfo(); }, "Successful: System information received."},
        {[&] { session.GetStatus(); }, "Successful: System information received."},
        {[&] { session.DirectCommand("MKD /"); }, "Error: Error: 5"},
        {[&] { session.DirectCommand("TYPE A"); }, "Successful: FTP Direct Command complete"},
    };
    for (const auto& operation : operations) {
        const QString end = EndOf(operation.start);
        EXPECT_TRUE(end.startsWith(operation.end)) << end.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(Served("v1.hex")) || QFileInfo::exists(Served("v2.hex")));
    EXPECT_FALSE(status->reports.join(' ').contains("guest@example.org")) << "no password in a report";

    // The server's close after QUIT is not reported (pyftpdlib waits for the data connection to go).
    ASSERT_EQ(EndOf([&] { session.Logoff(); }), QLatin1String("Successful: Logoff Complete."));
    if (isVsftpd) {
        ASSERT_TRUE(QTest::qWaitFor([&] { return session.CommandSocket && session.CommandSocket->LastErrorCode() != 0; }, 5000));
        Settle();
        EXPECT_EQ(status->ends.last(), QLatin1String("Successful: Logoff Complete."));
    }
    ASSERT_EQ(EndOf([&] { LogonTo(server.Port()); }), QLatin1String("Successful: Connected to Corvane server."));
    ASSERT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Successful: Directory Change Complete."));

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

// Without TLS: over it, vsftpd ends a tree upload with 426 now and then under the sanitizers.
class RealTreeTest : public RealServerTest {};

TEST_P(RealTreeTest, TreesAndFileListsEveryWay)
{
    // Three levels with an empty folder beside the deep one; the zero-length file is not uploaded.
    ASSERT_TRUE(WriteFile(Local("src/tree/a.bin"), Bytes(5000, 1)) && WriteFile(Local("src/tree/empty.bin"), {})
                && WriteFile(Local("src/tree/sub1/b.bin"), Bytes(3000, 2)) && WriteFile(Local("src/tree/sub1/sub2/c.bin"), Bytes(2048, 3)));
    QDir().mkpath(Local("src/tree/hollow"));
    for (const char* folder : {"get1", "get2", "get3"})
        QDir().mkpath(Local(folder));
    ASSERT_TRUE(WriteFile(Served("keep.bin"), "kept"));
    const QStringList kept = Tree(server.IncomingPath());
    const QStringList expected = Tree(Local("src/tree")).filter(QRegularExpression("^(?!empty.bin)"));

    EXPECT_EQ(Run("/incoming", Local("src/tree/"), &FTPSessionClass::StartPutDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(Served("tree")), expected);

    EXPECT_EQ(Run("/incoming/tree", Local("get1"), &FTPSessionClass::StartGetDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(Local("get1")), expected);

    EXPECT_EQ(Run("/incoming/tree", {}, &FTPSessionClass::StartDeleteDir), "Successful: The directory has been deleted.");
    EXPECT_EQ(Tree(server.IncomingPath()), kept);

    // The same on one logged-on session; the upload enters the folder given and makes what it holds.
    ASSERT_EQ(EndOf([&] { LogonTo(server.Port()); }), QStringLiteral("Successful: Connected to Corvane server."));
    EXPECT_EQ(Run("/incoming", Local("src/"), &FTPSessionClass::ChangeDir), "Successful: Directory Change Complete.");
    EXPECT_EQ(Run("/incoming", Local("src/"), &FTPSessionClass::PutDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Run("/incoming/tree", Local("get2/"), &FTPSessionClass::GetDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(Local("get2")), expected);
    EXPECT_EQ(Run("/incoming/tree", {}, &FTPSessionClass::DeleteDir), "Successful: The directory has been deleted.");
    EXPECT_EQ(Tree(server.IncomingPath()), kept);
    EXPECT_EQ(Run({}, {}, &FTPSessionClass::Logoff), "Successful: Logoff Complete.");

    // Lists of files, each sequence on its own connection; names are taken from the end.
    ASSERT_TRUE(WriteFile(Local("flat/one.bin"), Bytes(4000, 4)) && WriteFile(Local("flat/two.bin"), Bytes(100, 5)));
    const QStringList flat = Tree(Local("flat"));
    session.Files = QStringList{"one.bin", "two.bin"};
    EXPECT_EQ(Run("/incoming", Local("flat/"), &FTPSessionClass::StartPutFile), "Successful: File Transfer Complete.");
    session.Files = QStringList{"dos.bin", "two.bin", "uno.bin", "one.bin"};
    EXPECT_EQ(Run("/incoming", {}, &FTPSessionClass::StartRenameFile), "Successful: File Rename Complete.");
    session.Files = QStringList{"uno.bin", "dos.bin"};
    EXPECT_EQ(Run("/incoming", Local("get3/"), &FTPSessionClass::StartGetFile), "Successful: File Transfer Complete.");
    EXPECT_EQ(Tree(Local("get3")), (QStringList{"dos" + flat.at(1).mid(3), "uno" + flat.at(0).mid(3)}));
    session.Files = QStringList{"uno.bin", "dos.bin"};
    EXPECT_EQ(Run("/incoming", {}, &FTPSessionClass::StartDeleteFile), "Successful: File has been deleted.");
    EXPECT_EQ(Tree(server.IncomingPath()), kept);
}

INSTANTIATE_TEST_SUITE_P(Servers, RealServerTest, ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Values(false)));
INSTANTIATE_TEST_SUITE_P(Tls, RealServerTest, ::testing::Combine(::testing::Values(true), ::testing::Bool(), ::testing::Values(true)));
INSTANTIATE_TEST_SUITE_P(Servers, RealTreeTest, ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Values(false)));

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

TEST_F(ScriptedTransferTest, EndsOfAFetch)
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
    EXPECT_EQ(FileBytes(Local("a.bin")), bytes);

    DataPeer early(bytes, 100);
    ScriptFront(early, {"150 Go\r\n"});
    SendLater("226 Done\r\n");
    EXPECT_EQ(Move("b.bin"), kDone);
    EXPECT_EQ(FileBytes(Local("b.bin")), bytes);
    EXPECT_EQ(server.received.mid(2), (QStringList{"PASV", "TYPE I", "RETR a.bin", "NOOP", "PASV", "TYPE I", "RETR b.bin"}));

    server.replies << "227 Entering Passive Mode (127,0,0,1,300,1).\r\n";
    EXPECT_EQ(Move("c.bin"), "Error: Error: The server's passive mode reply names no valid port: "
                             "227 Entering Passive Mode (127,0,0,1,300,1).");

    // A broken fetch keeps the earlier file, and what it received for a restart.
    ASSERT_TRUE(WriteFile(Local("d.bin"), "complete old file"));
    DataPeer closesEarly(bytes.left(1000), 100);
    ScriptFront(closesEarly, {"150 Go\r\n"});
    SendLater("426 Closed early\r\n");
    EXPECT_TRUE(Move("d.bin").startsWith("Error: Error: 426 Closed early"));

    DataPeer resets(bytes.left(1000), 100, false);
    ScriptFront(resets, {"150 Go\r\n"});
    EXPECT_EQ(Move("d.bin", [&] {
                  session.GetSingleFile();
                  ASSERT_TRUE(QTest::qWaitFor([&] { return session.DataSocket->ByteCount == 1000; }, 5000));
                  resets.Reset();
              }),
              "Error: Error while receiving the file: 110");
    EXPECT_EQ(FileBytes(Local("d.bin")) + '|' + FileBytes(Local(".d.bin.part")), "complete old file|" + bytes.left(1000));

    // A data connection that cannot be secured after PROT P ends the fetch.
    session.DataSocket->SetPrivate(true);
    DataPeer plain(bytes, 100);
    ScriptFront(plain, {"150 Go\r\n"});
    EXPECT_EQ(Move("a.bin"), "Error: Error while receiving the file: 108");
    EXPECT_EQ(FileBytes(Local("a.bin")), bytes);
}

// Names a listing may hold that must never reach the local disk as paths.
TEST_F(ScriptedTransferTest, HostileListingWritesNothingOutsideTheFolder)
{
    DataPeer listing({}, 0, false), unused({}, 0, false); // unused: offered for the next file, which never comes
    server.replies << listing.Reply227() << "250 OK\r\n" << "257 \"/top\"\r\n" << "150 Here\r\n" << "200 Type\r\n"
                   << unused.Reply227() << "250 Up\r\n";
    ASSERT_TRUE(QDir().mkpath(Local("inner")));
    session.ServerDirectory = "/top";
    session.LocalDirectory = Local("inner/");
    session.GetDir();
    ASSERT_TRUE(QTest::qWaitFor([&] { return listing.peer && server.received.contains("LIST -a"); }, 5000));
    listing.peer->write("drwxr-xr-x 2 0 0 4096 Jan 01 12:00 .\r\ndrwxr-xr-x 2 0 0 4096 Jan 01 12:00 ..\r\n"
                        "drwxr-xr-x 2 0 0 4096 Jan 01 12:00 ../../escape\r\n-rw-r--r-- 1 0 0 3 Jan 01 12:00 ../evil.bin\r\n"
                        "-rw-r--r-- 1 0 0 3 Jan 01 12:00 sub/evil.bin\r\n-rw-r--r-- 1 0 0 3 Jan 01 12:00 bell\a.bin\r\n"
                        "drwxr-xr-x 2 0 0 4096 Jan 01 12:00 x:y\r\n");
    listing.peer->disconnectFromHost();
    // The listing is read before the transfer is declared over, so no NOOP comes between.
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.DataSocket->TransferDone() && session.DirList.size() == 2; }, 5000));
    server.Send("226 Done\r\n");
    EXPECT_EQ(Ends(2).last(), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(local.path()), QStringList{"inner/"});
    EXPECT_EQ(server.received.mid(2), (QStringList{"PASV", "CWD /top", "PWD", "LIST -a", "TYPE I", "PASV", "CDUP"}));
}

TEST(ParseDirListLine, UnixAndDirectoryForms)
{
    // kind: 0 neither, 1 file, 2 directory, 3 link
    const struct { const char *line, *name; int kind; qint64 size; const char *date, *time; } rows[] = {
        {"drwxr-xr-x 2 owner group 4096 Jan 12 09:30 My Folder", "My Folder", 2, 4096, "Jan 12", "09:30"},
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
        // A month in field 0 is the first found, and field 0 counts as none: a later month does not win.
        {"Jan 5 10:00 x May 3 11:00 y", "", 0, 0, "", ""},
    };
    for (const auto& row : rows) {
        const FTPParsedDirListLineClass r = FTPSessionClass::ParseDirListLine(row.line);
        EXPECT_EQ(r.Name + '|' + r.ModDate + '|' + r.ModTime, QString(row.name) + '|' + row.date + '|' + row.time);
        EXPECT_EQ(std::tuple(r.IsFile, r.IsDir, r.Size), std::tuple(row.kind % 2 == 1, row.kind >= 2, row.size)) << row.line;
    }
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
