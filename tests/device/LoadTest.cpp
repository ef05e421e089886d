#include "DeviceFixture.h"
#include "HexFile.h"

#include <QFile>
#include <algorithm>
#include <functional>
#include <QTemporaryDir>
#include <QTimer>

using Fault = SimulatedVexil::Fault;

namespace {

constexpr std::uint32_t Start = 0x1D008000;
constexpr std::uint32_t WindowBytes = 0x38000;

} // namespace

class Load : public DeviceFixture {
protected:
    QTemporaryDir dir;
    QByteArray image;

    void SetUp() override
    {
        // Records below the window come first, as a real file's boot code does;
        // a boot-configuration record follows the full window.
        image = HexFile::Lines({HexFile::Linear(0x1D00), HexFile::Record(0, 0x0100, std::vector<std::uint8_t>(16, 0xEE))})
            + HexFile::Image(Start, WindowBytes, 3, false)
            + HexFile::Lines({HexFile::Linear(0x1FC0), HexFile::Record(0, 0x2FF0, {1, 2, 3, 4}), HexFile::EndOfFile()});
        UseFile(image);
        sim.SetAppRevision(112);
        sim.SetRevisionAfterLoad(113);
        window->mStartup = false;
        window->MCUavailableText.SetText(QStringLiteral("01.13"));
        window->CheckVexilRevisions();
        OpenProgressWin();
    }

    void UseFile(const QByteArray& content)
    {
        HexFile::Write(QDir(dir.path()), QStringLiteral("vexil0113.hex"), content);
        globals.m_FolderPath = dir.path() + QLatin1Char('/');
        window->m_RevisionedFilename.m_mstrPath = QStringLiteral("vexil0113.hex");
    }

    std::vector<SimulatedVexil::Received> DataPackets() const
    {
        std::vector<SimulatedVexil::Received> packets;
        for (const auto& r : sim.Log())
            if (r.cmd == '!' && r.addr != 0x8FFFFFFF)
                packets.push_back(r);
        return packets;
    }

    int Completions() const
    {
        int n = 0;
        for (const auto& r : sim.Log())
            n += r.cmd == '!' && r.addr == 0x8FFFFFFF;
        return n;
    }

    // The flash as the image describes it.
    static std::vector<std::uint8_t> ExpectedFlash()
    {
        std::vector<std::uint8_t> flash(WindowBytes);
        for (std::uint32_t i = 0; i < WindowBytes; ++i)
            flash[i] = static_cast<std::uint8_t>((i * 7 + 3) & 0xFF);
        return flash;
    }

    // After any failure, the same window loads a good file at once.
    void ExpectASecondLoadSucceeds()
    {
        sim.SetPresent(true);
        sim.SetRevisionUnchangedAfterLoad(false);
        sim.SetIdentity("vxil");
        UseFile(image);
        window->CheckVexilRevisions();
        EXPECT_TRUE(window->VexilLoader()) << StatusLines().join('\n').toStdString();
        EXPECT_TRUE(sim.Flash() == ExpectedFlash());
        EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();
    }
};

TEST_F(Load, WholeWindowGoesOutPacketByPacket)
{
    EXPECT_TRUE(window->VexilLoader());

    const auto packets = DataPackets();
    ASSERT_EQ(packets.size(), 14336u);
    EXPECT_EQ(Completions(), 1);
    const auto lastProgram = std::find_if(sim.Log().rbegin(), sim.Log().rend(), [](const auto& r) { return r.cmd == '!'; });
    EXPECT_EQ(lastProgram->addr, 0x8FFFFFFFu) << "the completion packet comes last";
    const std::tuple<std::size_t, std::uint32_t, int> expected[] = {
        {0, 0x1D008000, 0}, {7, 0x1D008000, 7}, {8, 0x1D008080, 0}, {14335, 0x1D03FF80, 7}};
    for (const auto& [i, addr, pkno] : expected) {
        EXPECT_EQ(packets[i].addr, addr) << "packet " << i;
        EXPECT_EQ(packets[i].pkno, pkno) << "packet " << i;
    }
    EXPECT_TRUE(sim.Flash() == ExpectedFlash());
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();

    EXPECT_FALSE(window->m_MCULoader.m_fIsEndOfFile) << "the end record lies after the window and is never read";
    EXPECT_FALSE(window->m_MCULoader.bs.IsOpen());
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.13");
    EXPECT_EQ(window->GetProgressWin().ProgressBar1.Maximum(), 0);
    EXPECT_EQ(window->GetProgressWin().ProgressBar1.Value(), 0x38000);

    const QStringList lines = StatusLines();
    const qsizetype sending = lines.indexOf("Sending firmware file \"vexil0113.hex\" to Vexil");
    ASSERT_GE(sending, 0);
    EXPECT_EQ(lines.mid(sending + 1), (QStringList{
                                          "Vexil firmware revision 01.13",
                                          "Loaded Vexil firmware revision \"01.13\"",
                                          "Vexil responded with revision \"01.13\"",
                                          "Vexil verification succeeded",
                                          "Vexil firmware load is complete",
                                      }));
    EXPECT_EQ(ActivityLines().mid(ActivityLines().size() - 4), (QStringList{
                                                                    "Loaded Vexil firmware revision 01.13",
                                                                    "Vexil responded with revision 01.13",
                                                                    "Vexil verification succeeded",
                                                                    "Vexil firmware load is complete",
                                                                }));
}

TEST_F(Load, FaultsEndWithTheirMessageAndLeaveTheLinkUsable)
{
    struct Row {
        const char* name;
        std::function<void()> arrange;
        bool result;
        const char* lastStatus;
        bool erased;
    };
    const Row rows[] = {
        {"unplugged while programming", [this] { sim.UnplugAfterReports(static_cast<int>(sim.Log().size()) + 5 + 100); },
         false, "Vexil is not responding", true},
        {"silent at sync", [this] { sim.SetCommandFault('U', Fault::Silent, -1); }, false, "Vexil is not responding", false},
        {"wrong unlock identity", [this] { sim.SetIdentity("vxiL"); }, false, "Firmware load verification failed", false},
        {"erase answered after 5 s", [this] { sim.SetEraseMicroseconds(5'000'000); }, true,
         "Vexil firmware load is complete", true},
        {"revision unchanged", [this] { sim.SetRevisionUnchangedAfterLoad(true); }, false,
         "Firmware load verification failed", true},
        {"file ends early", [this] { UseFile(HexFile::Image(Start, 0x1000)); }, false,
         "Firmware load verification failed", false},
        {"already at the file's revision, handshake fails",
         [this] {
             sim.SetAppRevision(113);
             sim.SetCommandFault('=', Fault::Silent);
         },
         true, "Vexil firmware load is complete", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        window->StatusField.SetText({});
        sim.SetCommandFault('U', Fault::None);
        sim.SetEraseMicroseconds(0);
        sim.SetAppRevision(112);
        window->CheckVexilRevisions();
        const std::size_t before = sim.Log().size();
        const int erasesBefore = sim.CountCommands('E');
        row.arrange();
        EXPECT_EQ(window->VexilLoader(), row.result);
        EXPECT_EQ(StatusLines().last(), QString::fromLatin1(row.lastStatus));
        EXPECT_EQ(sim.CountCommands('E') > erasesBefore, row.erased);
        if (QString::fromLatin1(row.name) == "file ends early") {
            EXPECT_EQ(sim.Log().size() - before, 2u) << "refused before any command: only the check after";
        }
        sim.SetCommandFault('U', Fault::None);
        sim.SetAppRevision(112);
        ExpectASecondLoadSucceeds();
    }
}

TEST_F(Load, UnsoundImageNeverReachesTheErase)
{
    std::vector<QByteArray> lines{HexFile::Linear(0x1D00)};
    for (std::uint16_t a = 0x8000; a < 0x8100; a += 16)
        lines.push_back(HexFile::Record(0, a == 0x8040 ? 0x8050 : a, std::vector<std::uint8_t>(16, 0x11)));
    lines.push_back(HexFile::EndOfFile());
    UseFile(HexFile::Lines(lines));
    const auto before = sim.Log().size();
    EXPECT_FALSE(window->VexilLoader());
    EXPECT_EQ(sim.CountCommands('E'), 0);
    EXPECT_EQ(sim.CountCommands('!'), 0);
    EXPECT_EQ(sim.CountCommands('='), 0);
    // Only the revision check after the refusal talks to the device.
    std::string sent;
    for (std::size_t i = before; i < sim.Log().size(); ++i)
        sent += sim.Log()[i].cmd;
    EXPECT_EQ(sent, "UG");
    EXPECT_TRUE(StatusLines().contains("Firmware file refused: data record 5 at 0x1D008050 leaves a gap after 0x1D008040"));
    EXPECT_EQ(StatusLines().last(), "Firmware load verification failed");
    ExpectASecondLoadSucceeds();
}

TEST_F(Load, ReadErrorInTheMiddleBeepsAndStops)
{
    // The file changes on disk after it was checked: a record start in its
    // second half is overwritten while the handshake runs.
    const QString path = dir.filePath("vexil0113.hex");
    QTimer::singleShot(0, [path] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        const qint64 at = file.readAll().indexOf(':', 300000);
        file.seek(at);
        file.write("X");
    });
    const int versionQueries = sim.CountCommands('G');
    EXPECT_FALSE(window->VexilLoader());
    EXPECT_EQ(platform.calls, QStringList{"Beep"});
    const QStringList lines = StatusLines();
    EXPECT_EQ(lines.mid(lines.size() - 2), (QStringList{
                                               "Expected start character \":\" not found",
                                               "Vexil programming failed. Verify file source and revision and re-try the download.",
                                           }));
    EXPECT_EQ(ActivityLines().last(), "Vexil programming failed. Verify file source and revision and re-try the download.");
    EXPECT_EQ(Completions(), 0);
    EXPECT_EQ(sim.CountCommands('G'), versionQueries + 1) << "no revision check after a read failure";
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
    EXPECT_FALSE(window->m_MCULoader.bs.IsOpen());
    ExpectASecondLoadSucceeds();
}

TEST_F(Load, MissingFileSendsNothing)
{
    window->m_RevisionedFilename.m_mstrPath = QStringLiteral("vexil0999.hex");
    const auto before = sim.Log().size();
    EXPECT_FALSE(window->VexilLoader());
    EXPECT_EQ(sim.Log().size(), before);
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
}
