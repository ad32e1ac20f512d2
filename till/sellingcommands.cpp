// The commands that sell. Bad input is reported before anything is sold.
#include "catalogue.h"
#include "checkview.h"
#include "commands.h"
#include "console.h"
#include "receiptprinter.h"
#include "scenarioplayer.h"
#include "scenarioreader.h"
#include "scriptedcashier.h"
#include "sellingtill.h"
#include "terminalsale.h"

#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const ScenarioCheck *firstCheck(const QList<Scenario> &scenarios)
{
    for (const Scenario &scenario : scenarios) {
        if (!scenario.checks.isEmpty())
            return &scenario.checks.constFirst();
    }
    return nullptr;
}

/// Nothing where it would need an answer that nobody gives; the check then waits as it is.
std::optional<CheckResult> resume(CheckSession &session)
{
    try {
        return session.resume();
    } catch (const console::InputEnded &error) {
        console::printLine(QString::fromUtf8(error.what()));
        return std::nullopt;
    }
}

/// Recovers what an earlier run has left, and says so. Returns the check whose ending that was.
std::optional<CheckResult> recover(SellingTill &till)
{
    till.host().queue().findProblem();
    const std::optional<CheckResult> ended = resume(till.session());
    if (ended) {
        console::printLine(u"\nЗавершён чек, прерванный при закрытии"_s);
        printReceipt(*ended, till.drain());
    } else if (till.session().isOpen()) {
        console::printLine(u"\nВосстановлен открытый чек"_s);
    }
    if (const QString reason = till.session().loyaltyOff(); !reason.isEmpty())
        console::printLine(u"Бонусы не работают: "_s + plainText(reason, longestReason));
    return ended;
}

/// Says what is open and what can be done with it.
void explain(SellingTill &till, const Options &options)
{
    if (till.session().isOpen())
        console::print(checkView(till.session().result()) + waysToGoOn(options.configFile));
    else
        console::printLine(u"Открытого чека нет. Продать вручную: kvo-till sell, по сценарию: kvo-till run ФАЙЛ"_s);
    console::print(keptChecksView(till.session().keptChecks()));
}

/// What cannot be delivered in time stays queued: not a failure of the sale.
void deliverRest(SellingTill &till, const Options &options)
{
    till.session().endWaiting();
    deliver(till.drain(), options.drainTime, till.host().queue());
    const auto status = till.host().queue().statusIfItWorks();
    if (status)
        console::printLine(u'\n' + statusText(*status));
}

ExitStatus play(const QList<Scenario> &scenarios, SellingTill &till, ScriptedCashier &cashier, const Options &options)
{
    ScenarioPlayer player(till.session(), cashier, till.drain(), waysToGoOn(options.configFile));
    for (const Scenario &scenario : scenarios)
        player.play(scenario);
    if (scenarios.isEmpty())
        explain(till, options);
    deliverRest(till, options);
    if (player.differences() > 0)
        console::printLine(u"Расхождений: %1"_s.arg(player.differences()));
    return player.differences() > 0 ? Differed : Succeeded;
}

/// Recovers what an earlier run has left, then runs `sell`, which gets the check whose ending that was. `answers` are
/// for questions during the recovery. A failure in `sell` gives the status Differed.
template <class Sell>
ExitStatus withTill(const Options &options, const Answers &answers, Sell sell)
{
    const auto cashier = QSharedPointer<ScriptedCashier>::create(options.codeCommand);
    cashier->beginCheck(answers);
    SellingTill till(options.configFile, cashier);
    cashier->setLoyaltySystem(till.system());
    const std::optional<CheckResult> ended = recover(till);
    try {
        return sell(till, *cashier, ended);
    } catch (const BasicException &error) {
        return fail(error, Differed);
    } catch (const console::InputEnded &error) {
        return fail(BasicException(QString::fromUtf8(error.what())), Differed);
    }
}

} // namespace

ExitStatus runScenarios(const Options &options)
{
    QList<Scenario> scenarios;
    for (const QString &file : options.scenarioFiles)
        scenarios.append(readScenario(file));
    // A first check that goes on with the open one has the answers for its recovery as well.
    const ScenarioCheck *first = firstCheck(scenarios);
    const Answers answers = first && first->continued ? first->answers : Answers();
    return withTill(options, answers, [&](SellingTill &till, ScriptedCashier &cashier, const auto &) {
        return play(scenarios, till, cashier, options);
    });
}

ExitStatus sellByHand(const Options &options)
{
    return withTill(options, {}, [&](SellingTill &till, ScriptedCashier &, const auto &) {
        const auto [catalogue, problem] = openCatalogue(till.host().goodsFile());
        if (!problem.isEmpty())
            console::printLine(plainText(problem, longestReason));
        TerminalSale(till.session(), till.drain(), catalogue, waysToGoOn(options.configFile)).run();
        deliverRest(till, options);
        return Succeeded;
    });
}

ExitStatus voidOpenCheck(const Options &options)
{
    return withTill(options, {}, [&](SellingTill &till, ScriptedCashier &, const std::optional<CheckResult> &ended) {
        const bool isTooLate = ended && ended->outcome == "closed"_L1;
        if (till.session().isOpen())
            printReceipt(till.session().voidCheck(), till.drain());
        else
            console::printLine(isTooLate ? u"Чек уже закрывался и теперь закрыт, аннулировать его нельзя"_s
                                         : u"Открытого чека нет, аннулировать нечего"_s);
        deliverRest(till, options);
        return isTooLate ? Differed : Succeeded;
    });
}

} // namespace till
