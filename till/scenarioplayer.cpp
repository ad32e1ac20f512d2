// Plays scenarios step by step. A step that fails is shown to the cashier and the next one follows, as in a shop.
#include "scenarioplayer.h"

#include "console.h"
#include "endingqueue.h"
#include "performstep.h"
#include "receiptprinter.h"
#include "scriptedcashier.h"

#include <core/basicexception.h>
#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr qsizetype longestTitle = 2000; // characters

/// How long an expected empty queue may take to become empty.
constexpr std::chrono::seconds deliveryTime{10};

} // namespace

ScenarioPlayer::ScenarioPlayer(CheckSession &session, ScriptedCashier &cashier, QueueDrain &drain,
                               const QString &waysToGoOn)
    : m_session(session), m_cashier(cashier), m_drain(drain), m_waysToGoOn(waysToGoOn)
{}

void ScenarioPlayer::play(const Scenario &scenario)
{
    if (!scenario.title.isEmpty())
        console::printLine(u"\n### "_s + plainText(scenario.title, longestTitle));
    for (const ScenarioCheck &check : scenario.checks)
        playCheck(check);
}

void ScenarioPlayer::playCheck(const ScenarioCheck &check)
{
    if (!check.title.isEmpty())
        console::printLine(u"\n# "_s + plainText(check.title, longestTitle));
    // The recovery of a check that goes on has begun to use its answers.
    if (!std::exchange(m_isFirst, false) || !check.continued)
        m_cashier.beginCheck(check.answers);
    if (check.continued != m_session.isOpen()) {
        report(check, u"continue"_s, check.continued ? u"открытый чек"_s : u"нет открытого чека"_s,
               check.continued ? u"нет открытого чека"_s : u"открытый чек"_s);
        if (m_session.isOpen())
            console::print(m_waysToGoOn);
        return;
    }
    std::optional<CheckResult> last; // the check that the last step has closed, voided or parked
    const bool isTaken = check.goods.isEmpty() && check.steps.value(0).kind == Step::Kind::Take;
    if (!check.continued && !isTaken)
        m_session.open();
    for (const Goods &goods : check.goods)
        attempt(check, [&] { m_session.addGoods(makeItem(goods)); });
    for (const Step &step : check.steps)
        attempt(check, [&] {
            const std::optional<CheckResult> parked =
                step.kind == Step::Kind::Park && m_session.isOpen() ? std::optional(m_session.result()) : std::nullopt;
            const std::optional<CheckResult> ended = perform(m_session, step);
            last = ended ? ended : parked;
        });
    const CheckResult result = last ? *last : m_session.isOpen() ? m_session.result() : CheckResult();
    printReceipt(result, m_drain);
    compare(check, result);
}

void ScenarioPlayer::attempt(const ScenarioCheck &check, const std::function<void()> &operation)
{
    try {
        operation();
    } catch (const BasicException &error) {
        m_cashier.show(error.text());
        if (!check.expectation.messages)
            report(check, u"expect/messages"_s, u"нет сообщений об ошибках"_s, error.text().ru());
    }
}

void ScenarioPlayer::compare(const ScenarioCheck &check, const CheckResult &result)
{
    const QMap<QString, QString> actual = result.fields();
    const QMap<QString, QString> &expected = check.expectation.fields;
    for (auto field = expected.cbegin(); field != expected.cend(); ++field) {
        if (field.value() != actual.value(field.key()))
            report(check, u"expect/"_s + field.key(), field.value(), actual.value(field.key()));
    }
    if (const auto queued = check.expectation.queued) {
        // An empty queue is not reached at once; requests that wait for a service that is down stay where they are.
        if (*queued == 0)
            std::ignore = m_drain.waitUntilDrained(deliveryTime);
        const QueueStatus status = queueStatus().value_or(QueueStatus());
        if (const int left = status.waiting + status.blocked; left != *queued)
            report(check, u"expect/queued"_s, QString::number(*queued), QString::number(left));
    }
    if (check.expectation.messages)
        compareMessages(check, *check.expectation.messages);
}

void ScenarioPlayer::compareMessages(const ScenarioCheck &check, const QStringList &expected)
{
    const QStringList &actual = m_cashier.messages();
    if (actual.size() != expected.size()) {
        report(check, u"expect/messages"_s, u"сообщений: %1"_s.arg(expected.size()),
               u"%1: %2"_s.arg(QString::number(actual.size()), actual.join(u" / "_s)));
        return;
    }
    for (qsizetype index = 0; index < expected.size(); ++index) {
        if (!actual.at(index).contains(expected.at(index)))
            report(check, u"expect/messages/%1"_s.arg(index), expected.at(index), actual.at(index));
    }
}

void ScenarioPlayer::report(const ScenarioCheck &check, const QString &key, const QString &expected,
                            const QString &actual)
{
    ++m_differences;
    console::printLine(u"РАСХОЖДЕНИЕ %1/%2: ожидалось \"%3\", получено \"%4\""_s.arg(
        check.place, key, plainText(expected, longestTitle), plainText(actual, longestTitle)));
}

} // namespace till
