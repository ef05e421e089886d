#include "HidapiBackend.h"

#include <hidapi/hidapi.h>

namespace {

class HidapiDevice final : public HidDevice {
public:
    explicit HidapiDevice(hid_device* device) : m_device(device) {}
    ~HidapiDevice() override { hid_close(m_device); }
    HidapiDevice(const HidapiDevice&) = delete;
    HidapiDevice& operator=(const HidapiDevice&) = delete;

    int SetNonblocking(int nonblock) override { return hid_set_nonblocking(m_device, nonblock); }
    int Write(const unsigned char* data, std::size_t length) override { return hid_write(m_device, data, length); }
    int ReadTimeout(unsigned char* data, std::size_t length, int milliseconds) override
    {
        return hid_read_timeout(m_device, data, length, milliseconds);
    }

private:
    hid_device* m_device;
};

} // namespace

HidapiBackend::~HidapiBackend()
{
    if (m_initialised)
        hid_exit();
}

int HidapiBackend::Init()
{
    const int result = hid_init();
    if (result == 0)
        m_initialised = true;
    return result;
}

std::unique_ptr<HidDevice> HidapiBackend::Open(unsigned short vendorId, unsigned short productId)
{
    hid_device* device = hid_open(vendorId, productId, nullptr);
    if (!device)
        return nullptr;
    return std::make_unique<HidapiDevice>(device);
}
