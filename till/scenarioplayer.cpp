// Plays scenarios step by step. A step that fails is shown to the cashier and the next one follows, as in a shop.
#include "scenarioplayer.h"

#include "console.h"
#include "receipt.h"
#include "scriptedcashier.h"

#include <core/basicexception.h>
#include <core/singleton.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// How long an expected empty queue may take to become empty.
constexpr std::chrono::seconds deliveryTime{10};

void printReceipt(const CheckResult &result)
{
    console::print(receiptText(result, Singleton<DBQueueBroker>::instance()->status()));
}

} // namespace

ScenarioPlayer::ScenarioPlayer(CheckSession &session, ScriptedCashier &cashier, QueueDrain &drain)
    : m_session(session), m_cashier(cashier), m_drain(drain)
{}

void ScenarioPlayer::recover(const ScenarioCheck *next)
{
    if (next && next->continued)
        begin(*next);
    const std::optional<CheckResult> ended = m_session.resume();
    for (const QStringList notices = Singleton<CheckStore>::instance()->takeNotices(); const QString &notice : notices)
        m_cashier.show(tr::Tr(notice));
    if (ended) {
        console::printLine(u"\nЗавершён чек, прерванный при закрытии"_s);
        printReceipt(*ended);
    } else if (m_session.isOpen()) {
        console::printLine(u"\nВосстановлен открытый чек"_s);
    }
}

void ScenarioPlayer::play(const Scenario &scenario)
{
    if (!scenario.title.isEmpty())
        console::printLine(u"\n### "_s + scenario.title);
    for (const ScenarioCheck &check : scenario.checks)
        playCheck(check);
}

void ScenarioPlayer::begin(const ScenarioCheck &check)
{
    m_begun = true;
    m_cashier.beginCheck(check.answers);
}

void ScenarioPlayer::playCheck(const ScenarioCheck &check)
{
    if (!check.title.isEmpty())
        console::printLine(u"\n# "_s + check.title);
    if (!std::exchange(m_begun, false))
        m_cashier.beginCheck(check.answers);
    if (check.continued != m_session.isOpen()) {
        report(check, u"continue"_s, check.continued ? u"открытый чек"_s : u"нет открытого чека"_s,
               check.continued ? u"нет открытого чека"_s : u"открытый чек"_s);
        return;
    }
    m_ended.reset();
    if (!check.continued)
        m_session.open();
    for (const Goods &goods : check.goods)
        attempt(check, [&] { m_session.addGoods(makeItem(goods)); });
    for (const Step &step : check.steps)
        attempt(check, [&] { perform(step); });
    const CheckResult result = m_ended ? *m_ended : m_session.result();
    m_drain.wakeUp();
    printReceipt(result);
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

void ScenarioPlayer::perform(const Step &step)
{
    switch (step.kind) {
    case Step::Kind::Add:
        m_session.addGoods(makeItem(step.goods));
        break;
    case Step::Kind::Change:
        m_session.changeGoods(step.line, step.quantity, step.price);
        break;
    case Step::Kind::Remove:
        m_session.removeGoods(step.line);
        break;
    case Step::Kind::Restore:
        m_session.restoreGoods();
        break;
    case Step::Kind::Card:
        m_session.addCard(ECardNumberType::Scanned, step.number);
        break;
    case Step::Kind::Phone:
        m_session.addCard(ECardNumberType::Phone, step.number);
        break;
    case Step::Kind::Price:
        m_session.price();
        break;
    case Step::Kind::Subtotal:
        m_session.subtotal();
        break;
    case Step::Kind::Spend:
        m_session.spend();
        break;
    case Step::Kind::Hold:
        hold(step.wait);
        break;
    case Step::Kind::Close:
        m_ended = m_session.close();
        break;
    case Step::Kind::Void:
        m_ended = m_session.voidCheck();
        break;
    }
}

void ScenarioPlayer::hold(std::chrono::seconds wait) const
{
    console::printLine(u"Касса ждёт с открытым чеком: до %1 с, процесс %2"_s.arg(
        QString::number(wait.count()), QString::number(QCoreApplication::applicationPid())));
    QThread::sleep(static_cast<unsigned long>(wait.count()));
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
        const DBQueueBroker::Status status = Singleton<DBQueueBroker>::instance()->status();
        if (const int left = status.waiting + status.deadLetters; left != *queued)
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
    console::printLine(
        u"РАСХОЖДЕНИЕ %1/%2: ожидалось \"%3\", получено \"%4\""_s.arg(check.place, key, expected, actual));
}

} // namespace till
