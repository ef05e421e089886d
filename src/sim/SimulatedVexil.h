#pragma once

#include "Clock.h"
#include "HidBackend.h"

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

// A stand-in for the device's bootloader behind the HID seam. It decodes every
// output report on its own (independently of the host's encoder), rejects any
// report that breaks the protocol, and answers after a configurable latency
// measured on the shared clock, so the host's time-outs meet real waits.
class SimulatedVexil final : public HidBackend {
public:
    static constexpr std::uint32_t WindowStart = 0x1D008000;
    static constexpr std::uint32_t WindowEnd = 0x1D040000;
    static constexpr std::uint32_t CompleteAddress = 0x8FFFFFFF;

    enum class Fault { None, Silent, WrongStatus, EmptyReportFirst };

    // One report the device accepted or rejected, decoded.
    struct Received {
        char cmd = 0;
        std::uint8_t pkno = 0;
        std::uint32_t addr = 0;
        std::array<std::uint8_t, 16> data{};
        qint64 atMicroseconds = 0;
        bool accepted = false;
    };

    explicit SimulatedVexil(Clock& clock);
    ~SimulatedVexil() override;

    // Configuration.
    void SetPresent(bool present);
    void SetInitFails(bool fails) { m_initFails = fails; }
    // The device disappears right after receiving report number `count` (1-based);
    // the answer to that report never comes. -1 keeps it plugged in.
    void UnplugAfterReports(int count) { m_unplugAfter = count; }
    void SetLatencyMicroseconds(qint64 us) { m_latencyUs = us; }
    void SetEraseMicroseconds(qint64 us) { m_eraseUs = us; }
    void SetBootVersion(const std::string& fiveChars) { m_bootVersion = fiveChars; }
    void SetAppRevision(std::uint8_t revision) { m_appRevision = revision; }
    // The revision the device reports once a load has completed.
    void SetRevisionAfterLoad(std::uint8_t revision) { m_revisionAfterLoad = revision; }
    // Asked at the completion of each load instead, when set: a device runs what it was sent.
    void SetRevisionAfterLoad(std::function<std::uint8_t()> revisionOfLoadedFile)
    {
        m_revisionOfLoadedFile = std::move(revisionOfLoadedFile);
    }
    // A load completes but the device keeps reporting its old revision.
    void SetRevisionUnchangedAfterLoad(bool unchanged) { m_revisionUnchanged = unchanged; }
    // Once a load completes, the next `count` syncs go unanswered, as while the device restarts.
    void SetMissedSyncsAfterLoad(int count) { m_missAfterLoad = count; }
    void SetIdentity(const std::string& fourChars) { m_identity = fourChars; }
    // Misbehaves on the next `times` commands with this letter (-1: always).
    // WrongStatus answers with `letter` instead of the proper status.
    void SetCommandFault(char cmd, Fault fault, int times = 1, char letter = 'N');

    // Observation.
    const std::vector<Received>& Log() const { return m_log; }
    int CountCommands(char cmd) const;
    const QStringList& ProtocolErrors() const { return m_errors; }
    const std::vector<std::uint8_t>& Flash() const { return m_flash; }
    bool LoadCompleted() const { return m_state == State::Complete; }
    bool Erased() const { return m_state == State::Erased || m_state == State::Complete; }
    std::uint8_t AppRevision() const { return m_appRevision; }
    int OpenCount() const { return m_openCount; }
    bool Plugged() const { return m_present; }

    // HidBackend
    int Init() override;
    std::unique_ptr<HidDevice> Open(unsigned short vendorId, unsigned short productId) override;

private:
    class Handle;
    friend class Handle;

    enum class State { Locked, Unlocked, Erased, Complete };

    struct Answer {
        std::array<std::uint8_t, 32> report{};
        qint64 readyAt = 0;
    };

    int HandleWrite(int generation, const unsigned char* data, std::size_t length);
    int HandleRead(int generation, unsigned char* data, std::size_t length, int milliseconds);
    bool Alive(int generation) const { return m_present && generation == m_generation; }
    void Unplug();
    void Reject(Received& entry, const QString& why);
    void Accept(const Received& request, qint64 delayUs);
    void QueueAnswer(const Received& request, std::uint8_t status, qint64 delayUs);
    Fault TakeFault(char cmd, char& letter);

    Clock& m_clock;
    bool m_present = true;
    bool m_initFails = false;
    int m_generation = 0;
    int m_unplugAfter = -1;
    int m_reportCount = 0;
    int m_openCount = 0;
    qint64 m_latencyUs = 0;
    qint64 m_eraseUs = 0;
    std::string m_bootVersion = "01.03";
    std::string m_identity = "vxil";
    std::uint8_t m_appRevision = 112;
    std::uint8_t m_revisionAfterLoad = 113;
    bool m_revisionUnchanged = false;
    int m_missAfterLoad = 0;
    std::function<std::uint8_t()> m_revisionOfLoadedFile;

    struct FaultPlan {
        Fault fault = Fault::None;
        int times = 0;
        char letter = 'N';
    };
    std::map<char, FaultPlan> m_faults;

    State m_state = State::Locked;
    std::uint32_t m_nextAddress = WindowStart;
    std::vector<std::uint8_t> m_flash;
    std::vector<Answer> m_pending;
    std::vector<Received> m_log;
    QStringList m_errors;
};
