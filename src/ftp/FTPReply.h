#pragma once

#include <QHostAddress>
#include <QString>

#include <optional>

// Pure helpers for the text of the control connection.

// The numeric value of the reply's first blank-separated field: leading digits
// only, so "220-Hello" gives 220 and a field without leading digits gives 0.
int FTPReplyCode(const QString& line);

// Final-line test A: not a continuation (first character not a blank) and not
// the opening of a multi-line reply (fourth character not "-").
bool FTPFinalLineA(const QString& line);
// Final-line test B: first character not a blank and fourth character a blank,
// so a bare "200" is not final under it.
bool FTPFinalLineB(const QString& line);

// The port of a 227 reply: fields 5 and 6 of the text between the first "("
// and the next ")". Nothing when the reply does not hold exactly six numbers of
// 0 to 255 or names port 0, so a hostile reply can never aim the data
// connection at a port out of range.
std::optional<quint16> FTPPassivePort(const QString& line);

// The parenthesised text of a 227 reply with every "," made a ".", all six
// fields included; empty when there are no parentheses.
QString FTPPassiveAddress(const QString& line);

// The argument of "PORT ": the IPv4 address with "," for "." and the port as
// its high and low byte.
QString FTPPortArgument(const QHostAddress& local, int port);
