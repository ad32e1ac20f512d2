// What kvo-till ends with.
#pragma once

namespace till {

/// Exit statuses of the program.
enum ExitStatus : int {
    Succeeded = 0,
    Differed = 1, ///< An expectation did not hold, an operation failed, or requests could not be delivered.
    Unusable = 2  ///< The command line, a scenario, the configuration or the plugin is at fault; nothing was sold.
};

} // namespace till
