// `kvo-till doctor`: finds out why a till does not sell, and says what to do.
#pragma once

#include <QtCore/QString>

#include <functional>

namespace till::doctor {

enum class Verdict { Ok, Warning, Failure, Skipped };

/// What one check has found.
struct Finding
{
    Verdict verdict = Verdict::Ok;
    QString found;
    QString remedy{}; ///< What to do; empty when nothing needs doing.
    QString quote{};  ///< What the till would tell its cashier about it, word for word.
    QString check{};  ///< Its name; filled by examine().
};

/// One check. It is skipped when the check that it needs has failed or was skipped.
struct Check
{
    QString name;
    QString needs; ///< Empty: nothing.
    std::function<Finding()> run;
};

/// Runs the checks in their order. What they found can be shown as it is: nothing in it can forge a line or command a
/// terminal.
QList<Finding> examine(const QList<Check> &checks);

/// One line for each finding, or JSON with the same content.
QString reportText(const QList<Finding> &findings);
QString reportJson(const QList<Finding> &findings);

/// 0 all well, 1 warnings, 2 failures.
int exitStatus(const QList<Finding> &findings);

} // namespace till::doctor
