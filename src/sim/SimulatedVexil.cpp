#include "SimulatedVexil.h"

#include <algorithm>

namespace {

constexpr std::size_t OutputReportSize = 33;
constexpr std::size_t InputReportSize = 32;
constexpr unsigned short VendorId = 0x04D8;
constexpr unsigned short ProductId = 0xF15D;

std::uint32_t Le32(const unsigned char* p)
{
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8
        | static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

QString Hex(std::uint32_t value)
{
    return QStringLiteral("0x") + QString::number(value, 16).toUpper();
}

} // namespace

class SimulatedVexil::Handle final : public HidDevice {
public:
    Handle(SimulatedVexil& device, int generation) : m_device(device), m_generation(generation) {}

    int SetNonblocking(int) override { return m_device.Alive(m_generation) ? 0 : -1; }
    int Write(const unsigned char* data, std::size_t length) override
    {
        return m_device.HandleWrite(m_generation, data, length);
    }
    int ReadTimeout(unsigned char* data, std::size_t length, int milliseconds) override
    {
        return m_device.HandleRead(m_generation, data, length, milliseconds);
    }

private:
    SimulatedVexil& m_device;
    int m_generation;
};

SimulatedVexil::SimulatedVexil(Clock& clock) : m_clock(clock), m_flash(WindowEnd - WindowStart, 0xFF) {}

SimulatedVexil::~SimulatedVexil() = default;

void SimulatedVexil::SetPresent(bool present)
{
    if (!present)
        Unplug();
    else
        m_present = true;
}

void SimulatedVexil::SetCommandFault(char cmd, Fault fault, int times, char letter)
{
    m_faults[cmd] = FaultPlan{fault, times, letter};
}

int SimulatedVexil::CountCommands(char cmd) const
{
    return static_cast<int>(std::count_if(m_log.begin(), m_log.end(), [cmd](const Received& r) { return r.cmd == cmd; }));
}

int SimulatedVexil::Init()
{
    return m_initFails ? -1 : 0;
}

std::unique_ptr<HidDevice> SimulatedVexil::Open(unsigned short vendorId, unsigned short productId)
{
    if (!m_present || vendorId != VendorId || productId != ProductId)
        return nullptr;
    ++m_openCount;
    // A fresh handle starts with no queued input, as a newly opened hidraw node does.
    m_pending.clear();
    return std::make_unique<Handle>(*this, m_generation);
}

void SimulatedVexil::Unplug()
{
    m_present = false;
    ++m_generation;
    m_pending.clear();
}

SimulatedVexil::Fault SimulatedVexil::TakeFault(char cmd, char& letter)
{
    auto it = m_faults.find(cmd);
    if (it == m_faults.end() || it->second.times == 0 || it->second.fault == Fault::None)
        return Fault::None;
    if (it->second.times > 0)
        --it->second.times;
    letter = it->second.letter;
    return it->second.fault;
}

void SimulatedVexil::Reject(Received& entry, const QString& why)
{
    entry.accepted = false;
    m_errors << QStringLiteral("report %1 ('%2'): %3").arg(m_reportCount).arg(QLatin1Char(entry.cmd ? entry.cmd : '?')).arg(why);
}

void SimulatedVexil::QueueAnswer(const Received& request, std::uint8_t status, qint64 delayUs)
{
    Answer answer;
    auto& r = answer.report;
    r[0] = static_cast<std::uint8_t>(request.cmd);
    r[1] = request.pkno;
    r[2] = 0;
    for (int i = 0; i < 4; ++i)
        r[3 + i] = static_cast<std::uint8_t>(request.addr >> (8 * i));
    std::copy(request.data.begin(), request.data.end(), r.begin() + 7);
    r[24] = status;
    std::uint8_t sum = 0;
    for (int i = 0; i <= 24; ++i)
        sum = static_cast<std::uint8_t>(sum + r[i]);
    r[23] = static_cast<std::uint8_t>(-sum);
    answer.readyAt = m_clock.Microseconds() + delayUs;
    m_pending.push_back(answer);
}

void SimulatedVexil::Accept(const Received& request, qint64 delayUs)
{
    QueueAnswer(request, 'A', delayUs);
}

int SimulatedVexil::HandleWrite(int generation, const unsigned char* data, std::size_t length)
{
    if (!Alive(generation))
        return -1;
    ++m_reportCount;
    Received entry;
    entry.atMicroseconds = m_clock.Microseconds();
    entry.accepted = true;

    if (length != OutputReportSize) {
        Reject(entry, QStringLiteral("output report of %1 bytes, expected 33").arg(length));
    } else {
        entry.cmd = static_cast<char>(data[1]);
        entry.pkno = data[2];
        entry.addr = Le32(data + 4);
        std::copy(data + 8, data + 24, entry.data.begin());

        std::uint8_t sum = 0;
        for (std::size_t i = 1; i <= 25; ++i)
            sum = static_cast<std::uint8_t>(sum + data[i]);
        const bool paddingClear = std::all_of(data + 26, data + 33, [](unsigned char b) { return b == 0; });
        const bool requestFieldsClear = entry.pkno == 0 && entry.addr == 0
            && std::all_of(entry.data.begin(), entry.data.end(), [](std::uint8_t b) { return b == 0; });

        if (data[0] != 0)
            Reject(entry, QStringLiteral("report number %1, expected 0").arg(data[0]));
        else if (sum != 0)
            Reject(entry, QStringLiteral("checksum leaves %1, expected 0").arg(sum));
        else if (data[3] != 0 || data[25] != 0 || !paddingClear)
            Reject(entry, QStringLiteral("rw, status or padding not 0"));
        else if (entry.cmd != '!' && !requestFieldsClear)
            Reject(entry, QStringLiteral("request fields of a command without fields are not 0"));
    }

    if (entry.accepted) {
        char letter = 'N';
        const Fault fault = TakeFault(entry.cmd, letter);
        if (fault == Fault::Silent) {
            entry.accepted = false;
        } else if (fault == Fault::WrongStatus) {
            entry.accepted = false;
            QueueAnswer(entry, static_cast<std::uint8_t>(letter), m_latencyUs);
        } else {
            if (fault == Fault::EmptyReportFirst)
                QueueAnswer(entry, 0, m_latencyUs / 2);
            switch (entry.cmd) {
            case 'U':
                Accept(entry, m_latencyUs);
                break;
            case 'V': {
                Received answer = entry;
                for (std::size_t i = 0; i < 5 && i < m_bootVersion.size(); ++i)
                    answer.data[i] = static_cast<std::uint8_t>(m_bootVersion[i]);
                Accept(answer, m_latencyUs);
                break;
            }
            case 'G': {
                Received answer = entry;
                answer.data[0] = m_appRevision;
                Accept(answer, m_latencyUs);
                break;
            }
            case '=': {
                Received answer = entry;
                for (std::size_t i = 0; i < 4 && i < m_identity.size(); ++i)
                    answer.data[i] = static_cast<std::uint8_t>(m_identity[i]);
                m_state = State::Unlocked;
                Accept(answer, m_latencyUs);
                break;
            }
            case 'E':
                if (m_state == State::Locked) {
                    Reject(entry, QStringLiteral("erase before unlock"));
                    break;
                }
                std::fill(m_flash.begin(), m_flash.end(), 0xFF);
                m_state = State::Erased;
                m_nextAddress = WindowStart;
                Accept(entry, m_eraseUs + m_latencyUs);
                break;
            case '!':
                if (m_state != State::Erased) {
                    Reject(entry, m_state == State::Complete ? QStringLiteral("program packet after completion")
                                                             : QStringLiteral("program packet before erase"));
                } else if (entry.addr == CompleteAddress) {
                    if (entry.pkno != 0 || std::any_of(entry.data.begin(), entry.data.end(), [](std::uint8_t b) { return b != 0; })) {
                        Reject(entry, QStringLiteral("completion packet with pkno or data"));
                        break;
                    }
                    m_state = State::Complete;
                    if (!m_revisionUnchanged)
                        m_appRevision = m_revisionOfLoadedFile ? m_revisionOfLoadedFile() : m_revisionAfterLoad;
                    if (m_missAfterLoad > 0)
                        SetCommandFault('U', Fault::Silent, m_missAfterLoad);
                    QueueAnswer(entry, 'B', m_latencyUs);
                } else {
                    const std::uint32_t target = entry.addr + 16u * entry.pkno;
                    if (entry.addr % 128 != 0 || entry.pkno > 7)
                        Reject(entry, QStringLiteral("block address %1 / pkno %2 malformed").arg(Hex(entry.addr)).arg(entry.pkno));
                    else if (target != m_nextAddress)
                        Reject(entry, QStringLiteral("packet for %1, expected %2").arg(Hex(target), Hex(m_nextAddress)));
                    else if (target >= WindowEnd)
                        Reject(entry, QStringLiteral("packet for %1 beyond the flash window").arg(Hex(target)));
                    else {
                        std::copy(entry.data.begin(), entry.data.end(), m_flash.begin() + (target - WindowStart));
                        m_nextAddress += 16;
                        Accept(entry, m_latencyUs);
                    }
                }
                break;
            default:
                Reject(entry, QStringLiteral("unknown command"));
                break;
            }
        }
    }
    m_log.push_back(entry);

    if (m_unplugAfter > 0 && m_reportCount >= m_unplugAfter) {
        m_unplugAfter = -1; // plugging it back in gives a healthy device
        Unplug();
    }
    return static_cast<int>(length);
}

int SimulatedVexil::HandleRead(int generation, unsigned char* data, std::size_t length, int milliseconds)
{
    if (!Alive(generation)) {
        // A read on a vanished device fails at once on hardware too, but not in no time at all.
        m_clock.SleepMicroseconds(1000);
        return -1;
    }
    const qint64 now = m_clock.Microseconds();
    const qint64 budget = milliseconds < 0 ? -1 : qint64(milliseconds) * 1000;
    if (m_pending.empty() || (budget >= 0 && m_pending.front().readyAt - now > budget)) {
        // Nothing arrives in time. A blocking read with nothing queued would wait
        // forever on hardware; here it gives up after the host's usual read slice.
        m_clock.SleepMicroseconds(budget >= 0 ? budget : 100'000);
        return 0;
    }
    const Answer answer = m_pending.front();
    m_pending.erase(m_pending.begin());
    if (answer.readyAt > now)
        m_clock.SleepMicroseconds(answer.readyAt - now);
    const std::size_t n = std::min(length, InputReportSize);
    std::copy(answer.report.begin(), answer.report.begin() + static_cast<std::ptrdiff_t>(n), data);
    return static_cast<int>(n);
}
