#pragma once

#include <QString>

// What a load left in the device. Every ending of a load that did not succeed
// names it, so nobody has to guess whether the Vexil still has firmware.
struct LoadEnding {
    enum class Held {
        Untouched,   // nothing was erased: the device runs what it ran before
        Erased,      // the erase was sent and the image did not go out whole
        Unconfirmed, // the whole image went out, but the device does not report its revision
        NewFirmware, // the device reports the file's revision
    };

    Held held = Held::Untouched;
    QString before;   // the revision the device ran when the load began ("N/A" when unknown)
    QString expected; // the file's revision
    QString reported; // the revision reported afterwards; empty when the device did not answer

    // One line for the log, a message and a terminal; empty once the new firmware runs.
    QString Describe() const;
    // A short word for scripts: "untouched", "erased", "unconfirmed" or "loaded".
    QString Word() const;
};
