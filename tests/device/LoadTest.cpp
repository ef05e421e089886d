#include "DeviceFixture.h"
#include "HexFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

using Fault = SimulatedVexil::Fault;

namespace {

constexpr std::uint32_t WindowBytes = Window1Device::FLASH_WINDOW_END - Window1Device::FLASH_WINDOW_START;
const QString Failed = QStringLiteral("Firmware load verification failed");

} // namespace

class Load : public DeviceFixture {
protected:
    QTemporaryDir dir;
    std::size_t before = 0; // the device's log before the load

    void SetUp() override
    {
        // Records below the window come first, as a real file's boot code does;
        // a boot-configuration record follows the full window.
        UseFile(HexFile::Lines({HexFile::Linear(0x1D00), HexFile::Record(0, 0x0100, std::vector<std::uint8_t>(16, 0xEE))})
                + HexFile::Image(Window1Device::FLASH_WINDOW_START, WindowBytes, 3, false)
                + HexFile::Lines({HexFile::Linear(0x1FC0), HexFile::Record(0, 0x2FF0, {1, 2, 3, 4}), HexFile::EndOfFile()}));
        window->mStartup = false;
        window->MCUavailableText.SetText(QStringLiteral("01.13"));
        window->CheckVexilRevisions();
        OpenProgressWin();
        window->StatusField.SetText({});
        before = sim.Log().size();
    }

    void UseFile(const QByteArray& content)
    {
        HexFile::Write(QDir(dir.path()), QStringLiteral("vexil0113.hex"), content);
        globals.m_FolderPath = dir.path() + QLatin1Char('/');
        window->m_RevisionedFilename.m_mstrPath = QStringLiteral("vexil0113.hex");
    }
};

TEST_F(Load, WholeWindowGoesOutPacketByPacket)
{
    EXPECT_TRUE(window->VexilLoader());
    EXPECT_EQ(Sent(before), "UVG=E" + std::string(WindowBytes / 16 + 1, '!') + "UG");
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();
    ASSERT_EQ(sim.Flash().size(), WindowBytes);
    for (std::uint32_t i = 0; i < WindowBytes; ++i)
        ASSERT_EQ(sim.Flash()[i], static_cast<std::uint8_t>((i * 7 + 3) & 0xFF)) << i;
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.13");
    EXPECT_EQ(window->GetProgressWin().ProgressBar1.Value(), static_cast<int>(WindowBytes));
    EXPECT_EQ(StatusLines(), (QStringList{"Vexil Bootloader revision 01.03", "Vexil firmware revision 01.12",
                                          "Waiting up to 8 seconds for flash erase",
                                          "Sending firmware file \"vexil0113.hex\" to Vexil", "Vexil firmware revision 01.13",
                                          "Loaded Vexil firmware revision \"01.13\"", "Vexil responded with revision \"01.13\"",
                                          "Vexil verification succeeded", "Vexil firmware load is complete"}));
    EXPECT_EQ(ActivityLines().constLast(), "Vexil firmware load is complete");
}

TEST_F(Load, FaultsEndWithTheirMessage)
{
    const struct { const char* name; std::function<void()> arrange; bool result; QString lastStatus; bool erased; } rows[] = {
        {"unplugged while programming", [this] { sim.UnplugAfterReports(static_cast<int>(sim.Log().size()) + 100); },
         false, "Vexil is not responding", true},
        {"silent at sync", [this] { sim.SetCommandFault('U', Fault::Silent, 2); }, false, "Vexil is not responding", false},
        {"wrong unlock identity", [this] { sim.SetIdentity("vxiL"); }, false, Failed, false},
        {"revision unchanged after the load", [this] { sim.SetRevisionUnchangedAfterLoad(true); }, false, Failed, true},
        // The device already runs the file's revision, so the check after the failed handshake passes.
        {"handshake fails at the file's revision", [this] { sim.SetAppRevision(113); sim.SetCommandFault('=', Fault::Silent); },
         true, "Vexil firmware load is complete", false},
        // Last, as it keeps its file: a one-record gap is refused before the device is unlocked.
        {"unsound image", [this] { UseFile(HexFile::Lines({HexFile::Linear(0x1D00), HexFile::Record(0, 0x8000, std::vector<std::uint8_t>(16, 1)),
                                                           HexFile::Record(0, 0x8020, std::vector<std::uint8_t>(16, 1)), HexFile::EndOfFile()})); },
         false, Failed, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        sim.SetPresent(true);
        sim.SetAppRevision(112);
        sim.SetIdentity("vxil");
        window->CheckVexilRevisions();
        window->StatusField.SetText({});
        const int erases = sim.CountCommands('E');
        row.arrange();
        EXPECT_EQ(window->VexilLoader(), row.result);
        EXPECT_EQ(std::pair(StatusLines().last(), sim.CountCommands('E') > erases), std::pair(row.lastStatus, row.erased));
        EXPECT_FALSE(window->m_MCULoader.bs.IsOpen());
    }
}

TEST_F(Load, ReadErrorInTheMiddleBeepsAndStops)
{
    // The file changes on disk after it was checked: a record start in its
    // second half is overwritten while the first packets go out.
    QTimer::singleShot(0, [path = dir.filePath("vexil0113.hex")] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.seek(file.readAll().indexOf(':', 300000));
        file.write("X");
    });
    EXPECT_FALSE(window->VexilLoader());
    EXPECT_EQ(platform.calls, QStringList{"Beep"});
    const QString failed = QStringLiteral("Vexil programming failed. Verify file source and revision and re-try the download.");
    EXPECT_EQ(StatusLines().mid(StatusLines().size() - 2), (QStringList{"Expected start character \":\" not found", failed}));
    const std::string sent = Sent(before); // no completion packet, no revision check
    EXPECT_TRUE(sent.size() < 5 + WindowBytes / 16 && sent == "UVG=E" + std::string(std::max<std::size_t>(sent.size(), 5) - 5, '!')) << sent.size();
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
}
