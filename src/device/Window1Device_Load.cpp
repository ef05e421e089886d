#include "DoEvents.h"
#include "FlashImageCheck.h"
#include "Window1Device.h"


bool Window1Device::VexilUnlock()
{
    if (!VexilWriteReadResponse(COMMAND_ID_UNLOCK)) {
        ReportUnexpectedStatus("COMMAND_ID_UNLOCK");
        return false;
    }
    const auto& d = ResponsePacket.data;
    if (d[0] == 'v' && d[1] == 'x' && d[2] == 'i' && d[3] == 'l')
        return true;
    ReportLine(QStringLiteral("No ACK from Vexil COMMAND_ID_UNLOCK"), true);
    return false;
}

bool Window1Device::VexilEraseFlash()
{
    ReportLine(QStringLiteral("Waiting up to 8 seconds for flash erase"), false);
    if (VexilWriteReadResponse(COMMAND_ERASE_FLASH))
        return true;
    ReportUnexpectedStatus("COMMAND_ERASE_FLASH");
    return false;
}

bool Window1Device::VexilLoader()
{
    const QString& fileName = m_RevisionedFilename.m_mstrPath;
    return VexilLoadImage(
        FirmwareImage::FromFile(m_globals.m_FolderPath + fileName, fileName, MCUavailableText.Text()));
}

bool Window1Device::VexilLoadImage(const FirmwareImage& firmware)
{
    MCULoader& loader = m_MCULoader;
    const QString& fileName = firmware.name;
    m_LastLoad = LoadEnding{LoadEnding::Held::Untouched, m_globals.m_strMcuRevision, firmware.revision, {}};

    bool working = firmware.read && loader.VerifyBytes(firmware.bytes);
    if (!firmware.read) {
        MCUinstalledText.SetText(m_globals.m_strMcuRevision);
        return working;
    }

    // Nothing goes to the device until the records the load would send are
    // known to form one unbroken image: a file refused here leaves the flash as it is.
    if (working) {
        const FlashImageCheck::Result image =
            FlashImageCheck::Run(loader, firmware.bytes, FLASH_WINDOW_START, FLASH_WINDOW_END);
        if (!image.Sound()) {
            ReportLine(image.Describe(), false);
            working = false;
        }
    }

    loader.bs.OpenBytes(firmware.bytes);
    loader.m_fIsReadOK = true;
    loader.m_fIsEndOfFile = false;

    ProgressBar& bar = GetProgressWin().ProgressBar1;
    bar.SetMaximum(static_cast<int>(FLASH_WINDOW_END - FLASH_WINDOW_START));

    if (working)
        working = VexilSync();
    if (working)
        working = VexilBootVersion();
    if (working)
        working = VexilAppVersion();
    if (working)
        working = VexilUnlock();
    if (working && LoadMayGoOn && !LoadMayGoOn(false)) {
        // Nothing is erased yet: the device keeps its firmware and is not asked again.
        ReportLine(QStringLiteral("Firmware load cancelled before the flash erase"), false);
        loader.bs.Close();
        bar.SetMaximum(0);
        return false;
    }
    if (working) {
        // From the erase on, the device may hold no firmware until the load completes.
        m_LastLoad.held = LoadEnding::Held::Erased;
        working = VexilEraseFlash();
    }

    bool readFailure = false;
    if (working) {
        MCUinstalledText.SetText(QStringLiteral("Loading"));
        ReportLine(QStringLiteral("Sending firmware file \"") + fileName + QStringLiteral("\" to Vexil"), false);
        GetProgressWin().ActivityLog.Refresh();

        // Records are placed by this counter, not by their own address: the
        // image check above made sure the two agree.
        std::uint32_t counter = FLASH_WINDOW_START;
        for (;;) {
            if (counter >= FLASH_WINDOW_END) {
                m_LastLoad.held = LoadEnding::Held::Unconfirmed;
                WriteFrame.pkt.addr = static_cast<std::int32_t>(LOAD_COMPLETE_ADDRESS);
                WriteFrame.pkt.pkno = 0;
                WriteFrame.pkt.data.fill(0);
                VexilWriteReadResponse(COMMAND_PROGRAM_PACKET);
                break;
            }
            if (loader.m_fIsEndOfFile)
                break;
            if (!loader.ReadNext()) {
                readFailure = true;
                break;
            }
            if (loader.m_fIsEndOfFile)
                break;
            if (loader.m_dwAddress < FLASH_WINDOW_START)
                continue;
            if (LoadMayGoOn && !LoadMayGoOn(true))
                break;

            WriteFrame.pkt.addr = static_cast<std::int32_t>(counter & ~127u);
            WriteFrame.pkt.pkno = static_cast<std::uint8_t>((counter % 128) / 16);
            std::copy_n(loader.m_abData.begin(), ProgramPacket::DataSize, WriteFrame.pkt.data.begin());
            if (!VexilWriteReadResponse(COMMAND_PROGRAM_PACKET))
                break;
            counter += 16;
            bar.SetValue(bar.Value() + 16);
            bar.Refresh();
            DoEvents(-1);
        }
    }

    bar.SetMaximum(0);
    bar.Refresh();
    DoEvents(-1);

    bool result = false;
    if (readFailure) {
        m_platform.Beep();
        ReportLine(QStringLiteral("Vexil programming failed. Verify file source and revision and re-try the download."),
                   false);
    } else {
        DoEvents(500);
        bool answered = CheckVexilRevisions();
        // A device that opens but misses one answer while it restarts gets one more question.
        if (!answered && m_globals.m_FirmwareStatus == QLatin1String("Main")) {
            ReportLine(QStringLiteral("No revision from the Vexil after the load; asking once more"), true);
            DoEvents(500);
            answered = CheckVexilRevisions();
        }
        if (!answered) {
            ReportLine(QStringLiteral("Vexil is not responding"), false);
            loader.bs.Close();
            return false;
        }
        m_LastLoad.reported = m_globals.m_strMcuRevision;
        const QString& available = firmware.revision;
        if (available != m_globals.m_strMcuRevision) {
            ReportLine(QStringLiteral("Firmware load verification failed"), false);
        } else {
            result = true;
            if (m_LastLoad.held != LoadEnding::Held::Untouched)
                m_LastLoad.held = LoadEnding::Held::NewFirmware;
            const QString& device = m_globals.m_strMcuRevision;
            m_globals.SetStatusText(QStringLiteral("Loaded Vexil firmware revision \"") + available
                                        + QStringLiteral("\"\nVexil responded with revision \"") + device
                                        + QLatin1Char('"'),
                                    false);
            ProgressWin& window = GetProgressWin();
            window.SetActivityLog(QStringLiteral("Loaded Vexil firmware revision ") + available
                                  + QStringLiteral("\nVexil responded with revision ") + device);
            const QString done = QStringLiteral("Vexil verification succeeded\nVexil firmware load is complete");
            window.SetActivityLog(done);
            window.Refresh();
            m_globals.SetStatusText(done, false);
        }
    }

    if (loader.bs.IsOpen())
        loader.bs.Close();
    MCUinstalledText.SetText(m_globals.m_strMcuRevision);
    return result;
}
