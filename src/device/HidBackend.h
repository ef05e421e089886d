#pragma once

#include <cstddef>
#include <memory>

// The HID seam, shaped like the hidapi calls the program makes. Results follow
// hidapi: byte counts, 0 for "nothing within the time-out", -1 for an error.

// An open device; destroying it closes it (hid_close).
class HidDevice {
public:
    virtual ~HidDevice() = default;
    // hid_set_nonblocking: 0 on success, -1 on error.
    virtual int SetNonblocking(int nonblock) = 0;
    // hid_write: the bytes written, or -1.
    virtual int Write(const unsigned char* data, std::size_t length) = 0;
    // hid_read_timeout: the bytes read, 0 when none came within `milliseconds`, or -1.
    virtual int ReadTimeout(unsigned char* data, std::size_t length, int milliseconds) = 0;
};

class HidBackend {
public:
    virtual ~HidBackend() = default;
    // hid_init: 0 on success, -1 on error.
    virtual int Init() = 0;
    // hid_open without a serial number: the device, or nullptr when none matches.
    virtual std::unique_ptr<HidDevice> Open(unsigned short vendorId, unsigned short productId) = 0;
};
