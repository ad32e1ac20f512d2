// What the cashier types, as a step of a scenario.
#pragma once

#include "scenario.h"

namespace till {

class Catalogue;

/// The words that a line may begin with.
QStringList typedWords();

/// What can be typed, a line for each word.
QString typedHelp();

/// The step of one line that is not empty: a word of the scenarios with what belongs to it, else goods of the
/// catalogue. Throws BasicException that says what to type instead.
Step readTypedStep(const QString &line, const Catalogue &catalogue);

} // namespace till
