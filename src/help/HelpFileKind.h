#pragma once

#include <QString>

// What a file of the help folder is, by its name. The tests are not anchored
// (".txt" anywhere in the name counts) and the first that applies wins, in
// the order of the enumeration.
enum class HelpFileKind { Text, Image, Movie, Sound, Page, Unknown };

HelpFileKind KindOfHelpFile(const QString& name);
