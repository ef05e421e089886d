#pragma once

#include <pugixml.hpp>

#include <QString>

// What the viewer's parts share about the two XML files.
QString TocMissingText();
QString TocInvalidText();
// Element names compare without regard to case.
bool IsNamed(const pugi::xml_node& node, const char* name);
// A missing attribute reads as empty.
QString Attribute(const pugi::xml_node& node, const char* name);
