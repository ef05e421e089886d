#pragma once

#include "FirmwareImage.h"
#include "LoadEnding.h"
#include "MCULoader.h"
#include "ProgramFrame.h"
#include "ProgramPacket.h"
#include "VexilHid.h"
#include "Window1Base.h"

#include <cstdint>
#include <functional>

// The main window's device operations: one command exchange at a time over
// the HID link, and the revision queries that fill MCUinstalledText.
class Window1Device : public Window1Base {
    Q_OBJECT
public:
    static constexpr std::uint32_t FLASH_WINDOW_START = 0x1D008000;
    static constexpr std::uint32_t FLASH_WINDOW_END = 0x1D040000;
    static constexpr std::uint32_t LOAD_COMPLETE_ADDRESS = 0x8FFFFFFF;

    static constexpr char COMMAND_SYNC = 'U';
    static constexpr char COMMAND_READ_VERSION = 'V';
    static constexpr char COMMAND_GET_APP_VER = 'G';
    static constexpr char COMMAND_ID_UNLOCK = '=';
    static constexpr char COMMAND_ERASE_FLASH = 'E';
    static constexpr char COMMAND_PROGRAM_PACKET = '!';

    static constexpr int AnswerTimeoutMs = 1000;
    static constexpr int EraseTimeoutMs = 8000;

    Window1Device(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid,
                  QObject* parent = nullptr);

    MCULoader m_MCULoader{&m_globals, &m_platform};
    ProgramFrame WriteFrame;
    ProgramPacket ResponsePacket;

    // True while a load owns the link. WriteFrame and ResponsePacket serve every
    // command, so nothing else may talk to the device until the load is over.
    bool mDeviceBusy = false;
    // True while an exchange waits for its answer and serves the event loop.
    bool mExchanging = false;
    // Asked by a load before the erase (false) and before each packet after it
    // (true); answering false stops it there. A program that can be interrupted
    // sets it; unset, a load runs to its end.
    std::function<bool(bool flashErased)> LoadMayGoOn;

    void OpenHid();
    // One command and the wait for the status letter that ends it. No retry.
    bool VexilWriteReadResponse(char cmd);
    static QString Hex2(int value);

    bool CheckVexilRevisions();
    bool VexilSync();
    bool VexilBootVersion();
    bool VexilAppVersion();
    void VexilRevisionsTimer_Action();

    // Programs the file RevisionedFilename.m_mstrPath into the device; true only
    // when the device afterwards reports the file's revision (MCUavailableText).
    bool VexilLoader();
    // The same load of a file already read: its bytes are checked, then sent.
    bool VexilLoadImage(const FirmwareImage& firmware);
    // What the last load left in the device.
    LoadEnding m_LastLoad;
    bool VexilUnlock();
    bool VexilEraseFlash();

    VexilHid& hid() { return m_hid; }

protected:
    // A status line, repeated in the activity log while a load shows it.
    void ReportLine(const QString& text, bool verboseOnly);
    // "<name> unexpected response status "<letter>"" after a failed exchange.
    void ReportUnexpectedStatus(const char* commandName);

private:
    VexilHid& m_hid;
};
