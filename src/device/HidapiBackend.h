#pragma once

#include "HidBackend.h"

// The real USB link through the system's hidapi library.
class HidapiBackend final : public HidBackend {
public:
    ~HidapiBackend() override;
    int Init() override;
    std::unique_ptr<HidDevice> Open(unsigned short vendorId, unsigned short productId) override;

private:
    bool m_initialised = false;
};
