#include "FtpServers.h"
#include "FtpTestSupport.h"
#include "QtPrinters.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace {

QByteArray Bytes(qsizetype size, quint32 seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

void Write(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << path.toStdString();
}

// Every folder below root as "path/", every file as "path" and a digest of its bytes.
QStringList Tree(const QString& root)
{
    QStringList tree;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        QFile file(info.filePath());
        const QString path = QDir(root).relativeFilePath(info.filePath());
        tree << (info.isDir() ? path + '/'
                              : path + ' ' + QCryptographicHash::hash(file.open(QIODevice::ReadOnly) ? file.readAll() : "?",
                                                                      QCryptographicHash::Md5).toHex());
    }
    tree.sort();
    return tree;
}

// Parameters: vsftpd (else pyftpdlib), passive mode (else active).
class RealTreeTest : public ::testing::TestWithParam<std::tuple<bool, bool>>, protected FtpSessionHarness {
protected:
    RealFtpServer server{std::get<0>(GetParam()) ? RealFtpServer::Kind::Vsftpd : RealFtpServer::Kind::Pyftpdlib};
    QTemporaryDir local;
    qsizetype mark = 0;

    QString Served(const QString& name) const { return server.IncomingPath() + '/' + name; }
    QString Local(const QString& name) const { return local.filePath(name); }
    // The commands since the last call, without the log-on and the NOOPs that wait for a data close, and a
    // data front as "DATA" in either mode.
    std::string Transcript()
    {
        QStringList seen = server.CommandsSeen().mid(std::exchange(mark, server.CommandsSeen().size()));
        for (QString& command : seen) {
            if (command == "PASV" || command.startsWith("PORT "))
                command = "DATA";
        }
        return seen.filter(QRegularExpression("^(?!USER |PASS |NOOP)")).join(',').toStdString();
    }
    std::string Run(const QString& serverDirectory, const QString& localDirectory, void (FTPSessionClass::*operation)())
    {
        session.ServerDirectory = serverDirectory;
        session.LocalDirectory = localDirectory;
        session.CommandPort = server.Port();
        return EndOf([&] { (session.*operation)(); }).toStdString();
    }
};

TEST_P(RealTreeTest, TreesAndFileListsEveryWay)
{
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    session.SetLoginInfo("127.0.0.1", "anonymous", "guest@example.org");
    session.PassiveMode = std::get<1>(GetParam());
    // Three levels with an empty folder beside the deep one; the zero-length file is not uploaded.
    Write(Local("src/tree/a.bin"), Bytes(5000, 1));
    Write(Local("src/tree/empty.bin"), {});
    Write(Local("src/tree/sub1/b.bin"), Bytes(3000, 2));
    Write(Local("src/tree/sub1/sub2/c.bin"), Bytes(2048, 3));
    QDir().mkpath(Local("src/tree/hollow"));
    for (const char* folder : {"get1", "get2", "get3"})
        QDir().mkpath(Local(folder));
    Write(Served("keep.bin"), "kept");
    const QStringList kept = Tree(server.IncomingPath());
    const QStringList expected = Tree(Local("src/tree")).filter(QRegularExpression("^(?!empty.bin)"));

    EXPECT_EQ(Run("/incoming", Local("src/tree/"), &FTPSessionClass::StartPutDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(Served("tree")), expected);
    EXPECT_EQ(Transcript(), "CWD /incoming,MKD tree,CWD tree,TYPE I,DATA,STOR a.bin,CWD hollow,MKD hollow,CWD hollow,CDUP,CWD sub1,"
                            "MKD sub1,CWD sub1,DATA,STOR b.bin,CWD sub2,MKD sub2,CWD sub2,DATA,STOR c.bin,CDUP,CDUP,CDUP,QUIT");

    // Subdirectories are walked in the reverse order of the listing.
    EXPECT_EQ(Run("/incoming/tree", Local("get1"), &FTPSessionClass::StartGetDir), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(Local("get1")), expected);
    const QString walk = "CWD /incoming/tree,TYPE I,DATA,CWD /incoming/tree,PWD,LIST -a,%1DATA,CWD /incoming/tree/sub1,PWD,LIST -a,%2"
                         "DATA,CWD /incoming/tree/sub1/sub2,PWD,LIST -a,%3";
    const QString get = "TYPE I,DATA,RETR %1,TYPE I,DATA,";
    EXPECT_EQ(Transcript(), (walk.arg(get.arg("a.bin"), get.arg("b.bin"), get.arg("c.bin"))
                             + "CDUP,PWD,CDUP,PWD,DATA,CWD /incoming/tree/hollow,PWD,LIST -a,TYPE I,DATA,CDUP,PWD,CDUP,QUIT").toStdString());

    EXPECT_EQ(Run("/incoming/tree", {}, &FTPSessionClass::StartDeleteDir), "Successful: The directory has been deleted.");
    EXPECT_EQ(Tree(server.IncomingPath()), kept);
    EXPECT_EQ(Transcript(), (walk.arg("DELE a.bin,", "DELE b.bin,", "DELE c.bin,") + "CDUP,RMD /incoming/tree/sub1/sub2,PWD,CDUP,"
                             "RMD /incoming/tree/sub1,PWD,DATA,CWD /incoming/tree/hollow,PWD,LIST -a,CDUP,RMD /incoming/tree/hollow,"
                             "PWD,CDUP,RMD /incoming/tree,QUIT").toStdString());

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
    Write(Local("flat/one.bin"), Bytes(4000, 4));
    Write(Local("flat/two.bin"), Bytes(100, 5));
    const QStringList flat = Tree(Local("flat"));
    Transcript();
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
    EXPECT_EQ(QString::fromStdString(Transcript()).section(",QUIT,", 1, 1), QStringLiteral("CWD /incoming,DATA,TYPE I,RNFR one.bin,RNTO uno.bin,DATA,TYPE I,RNFR two.bin,RNTO dos.bin"));
}

INSTANTIATE_TEST_SUITE_P(Servers, RealTreeTest, ::testing::Combine(::testing::Bool(), ::testing::Bool()));

// Names a listing may hold that must never reach the local disk as paths.
TEST(ScriptedTreeTest, HostileListingWritesNothingOutsideTheFolder)
{
    QTcpServer listing;
    listing.listen(QHostAddress::LocalHost, 0);
    QPointer<QTcpSocket> data;
    QObject::connect(&listing, &QTcpServer::newConnection, [&] { data = listing.nextPendingConnection(); });
    QTcpServer unused; // the data port offered for the next file, which never comes
    unused.listen(QHostAddress::LocalHost, 0);
    FtpSessionHarness h;
    ScriptedFtpPeer peer;
    const auto pasv = [](quint16 port) { return "227 Passive (127,0,0,1," + QByteArray::number(port / 256) + ',' + QByteArray::number(port % 256) + ")\r\n"; };
    peer.replies = {"220 Ready\r\n", "331 Password\r\n", "230 In\r\n", pasv(listing.serverPort()), "250 OK\r\n",
                    "257 \"/top\"\r\n", "150 Here\r\n", "200 Type\r\n", pasv(unused.serverPort()), "250 Up\r\n"};
    QTemporaryDir outer;
    QDir().mkpath(outer.filePath("inner"));
    h.LogonTo(peer.Port());
    ASSERT_EQ(h.Ends(1).last(), "Successful: Connected to Corvane server.");
    h.session.ServerDirectory = "/top";
    h.session.LocalDirectory = outer.filePath("inner/");
    h.session.GetDir();
    ASSERT_TRUE(QTest::qWaitFor([&] { return data && peer.received.contains("LIST -a"); }, 5000));
    data->write("drwxr-xr-x 2 0 0 4096 Jan 01 12:00 .\r\ndrwxr-xr-x 2 0 0 4096 Jan 01 12:00 ..\r\n"
                "drwxr-xr-x 2 0 0 4096 Jan 01 12:00 ../../escape\r\n-rw-r--r-- 1 0 0 3 Jan 01 12:00 ../evil.bin\r\n"
                "-rw-r--r-- 1 0 0 3 Jan 01 12:00 sub/evil.bin\r\n-rw-r--r-- 1 0 0 3 Jan 01 12:00 bell\a.bin\r\n"
                "drwxr-xr-x 2 0 0 4096 Jan 01 12:00 x:y\r\n");
    data->disconnectFromHost();
    // The listing is read before the transfer is declared over, so no NOOP comes between.
    ASSERT_TRUE(QTest::qWaitFor([&] { return h.session.DataSocket->TransferDone() && h.session.DirList.size() == 2; }, 5000));
    peer.Send("226 Done\r\n");
    EXPECT_EQ(h.Ends(2).last(), "Successful: Directory Transfer Complete.");
    EXPECT_EQ(Tree(outer.path()), QStringList{"inner/"});
    EXPECT_EQ(peer.received.mid(2), (QStringList{"PASV", "CWD /top", "PWD", "LIST -a", "TYPE I", "PASV", "CDUP"}));
}

} // namespace
