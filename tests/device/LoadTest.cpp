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

TEST_F(Load, FaultsEndWithTheirMessageAndNameWhatTheDeviceHolds)
{
    const struct { const char* name; std::function<void()> arrange; bool result; QString lastStatus; bool erased; const char* held; } rows[] = {
        {"unplugged while programming", [this] { sim.UnplugAfterReports(static_cast<int>(sim.Log().size()) + 100); },
         false, "Vexil is not responding", true, "erased"},
        // The handshake's sync, the check after it and the one retry of that check.
        {"silent at sync", [this] { sim.SetCommandFault('U', Fault::Silent, 3); }, false, "Vexil is not responding", false, "untouched"},
        {"wrong unlock identity", [this] { sim.SetIdentity("vxiL"); }, false, Failed, false, "untouched"},
        {"revision unchanged after the load", [this] { sim.SetRevisionUnchangedAfterLoad(true); }, false, Failed, true, "unconfirmed"},
        {"one sync missed as the device restarts", [this] { sim.SetRevisionUnchangedAfterLoad(false); sim.SetMissedSyncsAfterLoad(1); },
         true, "Vexil firmware load is complete", true, "loaded"},
        // The device already runs the file's revision, so the check after the failed handshake passes.
        {"handshake fails at the file's revision", [this] { sim.SetAppRevision(113); sim.SetCommandFault('=', Fault::Silent); },
         true, "Vexil firmware load is complete", false, "untouched"},
        // Last, as it keeps its file: a one-record gap is refused before the device is unlocked.
        {"unsound image", [this] { UseFile(HexFile::Lines({HexFile::Linear(0x1D00), HexFile::Record(0, 0x8000, std::vector<std::uint8_t>(16, 1)),
                                                           HexFile::Record(0, 0x8020, std::vector<std::uint8_t>(16, 1)), HexFile::EndOfFile()})); },
         false, Failed, false, "untouched"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        sim.SetPresent(true);
        sim.SetAppRevision(112);
        sim.SetIdentity("vxil");
        sim.SetMissedSyncsAfterLoad(0);
        window->CheckVexilRevisions();
        window->StatusField.SetText({});
        const int erases = sim.CountCommands('E');
        row.arrange();
        EXPECT_EQ(window->VexilLoader(), row.result);
        EXPECT_EQ(std::pair(StatusLines().last(), sim.CountCommands('E') > erases), std::pair(row.lastStatus, row.erased));
        EXPECT_EQ(window->m_LastLoad.Word(), row.held);
        EXPECT_FALSE(window->m_MCULoader.bs.IsOpen());
    }
}

TEST_F(Load, FileChangedOnDiskDuringTheLoadIsNotWhatIsSent)
{
    // Rewritten with other bytes and cut to half its length while the first packets go out.
    QTimer::singleShot(0, [this] {
        const QByteArray other = HexFile::Image(Window1Device::FLASH_WINDOW_START, WindowBytes, 9);
        UseFile(other.left(other.size() / 2));
    });
    EXPECT_TRUE(window->VexilLoader());
    EXPECT_TRUE(platform.calls.isEmpty());
    ASSERT_EQ(sim.Flash().size(), WindowBytes);
    for (std::uint32_t i = 0; i < WindowBytes; ++i)
        ASSERT_EQ(sim.Flash()[i], static_cast<std::uint8_t>((i * 7 + 3) & 0xFF)) << i;
}
