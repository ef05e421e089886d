#pragma once

#include "FTPParsedDirListLineClass.h"

#include <QString>

// Pure helpers for listing text.

// text with every run of one character of charSet collapsed to one.
QString Squeeze(const QString& text, const QString& charSet);

// One listing line: the Unix form (its month field found by name) or the
// directory form of a Microsoft server (date, time, "<DIR>" or a size, name).
// Never reads past the fields; a line it does not understand gives the empty
// record.
FTPParsedDirListLineClass ParseDirListLine(const QString& line);

// The leading decimal digits of text as a number; 0 when there are none.
qint64 FTPLeadingNumber(const QString& text);

// True for a name that is safe to use inside one folder: not empty, not "."
// or "..", no "/" or "\", no control character.
bool FTPIsPlainName(const QString& name);
