// Each step is one operation of the session.
#include "performstep.h"

#include "console.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

void hold(std::chrono::seconds wait)
{
    console::printLine(u"Касса ждёт с открытым чеком: до %1 с, процесс %2"_s.arg(
        QString::number(wait.count()), QString::number(QCoreApplication::applicationPid())));
    QThread::sleep(static_cast<unsigned long>(wait.count()));
}

} // namespace

std::optional<CheckResult> perform(CheckSession &session, const Step &step)
{
    switch (step.kind) {
    case Step::Kind::Add:
        session.addGoods(makeItem(step.goods));
        break;
    case Step::Kind::Change:
        session.changeGoods(step.line, step.quantity, step.price);
        break;
    case Step::Kind::Remove:
        session.removeGoods(step.line);
        break;
    case Step::Kind::Restore:
        session.restoreGoods();
        break;
    case Step::Kind::Card:
        session.addCard(ECardNumberType::Scanned, step.number);
        break;
    case Step::Kind::Phone:
        session.addCard(ECardNumberType::Phone, step.number);
        break;
    case Step::Kind::RemoveCard:
        session.removeCard();
        break;
    case Step::Kind::Price:
        session.price();
        break;
    case Step::Kind::Subtotal:
        session.subtotal();
        break;
    case Step::Kind::Spend:
        session.spend();
        break;
    case Step::Kind::Hold:
        hold(step.wait);
        break;
    case Step::Kind::Park:
        session.park();
        break;
    case Step::Kind::Take:
        return session.take(step.number);
    case Step::Kind::Close:
        return session.close();
    case Step::Kind::Void:
        return session.voidCheck();
    }
    return std::nullopt;
}

} // namespace till
