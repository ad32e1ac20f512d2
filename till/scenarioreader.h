// Reads scenario files, the format of which is described by scenario.schema.json.
#pragma once

#include "scenario.h"

namespace till {

/// The scenario in `fileName`. Throws BasicException that names the file and the path in it for everything that the
/// format does not know or that is missing.
Scenario readScenario(const QString &fileName);

} // namespace till
