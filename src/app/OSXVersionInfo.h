#pragma once

#include "PlatformServices.h"

// The running system's version. The names come from the platform the program
// was first laid out for; here the numbers are the kernel's own release.
class OSXVersionInfo {
public:
    static OSVersionRecord OSVersion();
    // The desktop toolkit's version number where the platform has one; 0 here.
    static double appKitVersionNumber() { return 0.0; }
    // The leading "major.minor.patch" of a release text such as "6.1.0-18-amd64".
    static OSVersionRecord Parse(const QString& release);
};
