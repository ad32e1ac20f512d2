// What the cashier wants done, and what the cashier looks at beside the check.
#include "checkdesk.h"
#include "listings.h"
#include "till/endingqueue.h"
#include "till/receipt.h"

#include <core/basicexception.h>
#include <document/saledocument.h>

#include <QtCore/QDir>
#include <QtCore/QSaveFile>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// The day's finished checks.
QList<CheckResult> today()
{
    QList<CheckResult> finished;
    for (const auto &entry : Singleton<CheckStore>::instance()->journal(QDate::currentDate().startOfDay()))
        finished.append(resultFromJournal(entry.entry));
    return finished;
}

Page receiptPage(const QString &text)
{
    return {.kind = Page::Kind::Receipt, .title = CheckDesk::tr("Чек"), .text = text};
}

} // namespace

void CheckDesk::addGoods(const QString &entry)
{
    const QList<Goods> found = m_catalogue.find(entry);
    if (found.isEmpty())
        throw BasicException(tr("Товар не найден: %1. Проверьте код или введите часть названия.").arg(entry));
    if (found.size() > 1) {
        m_view.page = goodsPage(found);
        return;
    }
    if (!session().isOpen())
        session().open();
    session().addGoods(makeItem(found.constFirst()));
}

void CheckDesk::changeGoods(int line, const QString &text)
{
    if (text.startsWith(u'='))
        session().changeGoods(line, std::nullopt, parsePrice(text.mid(1)));
    else
        session().changeGoods(line, parseQuantity(text), std::nullopt);
}

void CheckDesk::identify(ECardNumberType type, const QString &number)
{
    if (!session().isOpen())
        session().open();
    session().addCard(type, number);
}

void CheckDesk::removeCard()
{
    if (confirms(tr("Убрать карту с чека?"), tr("Убрать")))
        session().removeCard();
}

void CheckDesk::take(const QString &identifier)
{
    if (const std::optional<CheckResult> ended = session().take(identifier))
        end(*ended);
}

void CheckDesk::voidCheck()
{
    if (confirms(tr("Аннулировать чек? Вернуть его будет нельзя."), tr("Аннулировать")))
        end(session().voidCheck());
}

void CheckDesk::end(const CheckResult &result)
{
    m_till->drain().wakeUp();
    if (!result.basket.isEmpty()) // The receipt tells whether the service has accepted the order.
        m_view.queue = queueStatus();
    m_view.page = receiptPage(receiptText(result, m_view.queue.value_or(QueueStatus())));
}

void CheckDesk::parkOrShowParked()
{
    if (session().isOpen())
        return session().park();
    QList<std::pair<CheckStore::KeptCheck, CheckResult>> parked;
    for (const QList<CheckStore::KeptCheck> kept = session().keptChecks(); const CheckStore::KeptCheck &check : kept) {
        auto document = QSharedPointer<SaleDocument>::create();
        try {
            if (check.standing != CheckStore::Standing::Unreadable)
                document = Singleton<CheckStore>::instance()->parked(check.identifier);
        } catch (const BasicException &error) {
            warn(error.text().ru());
        }
        parked.append({check, resultOf(*document, document->getCardRecords().value(0), 0)});
    }
    m_view.page = parkedPage(parked);
}

void CheckDesk::showQueue()
{
    m_view.page = queuePage(QueueAdmin().list());
}

void CheckDesk::retryRequest(const QString &number)
{
    QueueAdmin().retry(number.toLongLong());
    m_till->drain().wakeUp();
    showQueue();
}

void CheckDesk::discardRequest(const QString &number)
{
    const Question question{.text = tr("Снять запрос %1 с отправки? Сервис его не получит.").arg(number),
                            .reason = tr("Укажите причину: она останется в списке."),
                            .first = tr("Снять"),
                            .second = tr("Нет"),
                            .entry = Question::Entry::Text,
                            .isRisky = true};
    if (const std::optional<Answer> answer = waitForAnswer(question); answer->kind == Answer::Kind::First)
        QueueAdmin().discard(number.toLongLong(), answer->text);
    showQueue();
}

void CheckDesk::showJournal()
{
    m_view.page = journalPage(today());
}

void CheckDesk::showReceipt(const QString &identifier)
{
    for (const QList<CheckResult> finished = today(); const CheckResult &check : finished) {
        if (check.identifier == identifier)
            m_view.page = receiptPage(receiptText(check, {}));
    }
}

void CheckDesk::saveReceipt(const QString &text)
{
    const QDir folder(m_till->host().dataFolder());
    const QString name = u"receipt-%1.txt"_s.arg(QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss"_s));
    QSaveFile file(folder.filePath(name));
    const bool isPrivate = file.open(QFile::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    const QByteArray receipt = text.toUtf8();
    if (!isPrivate || file.write(receipt) != receipt.size() || !file.commit())
        throw BasicException(tr("Чек не сохранён: %1").arg(file.errorString()));
    m_view.page = receiptPage(text);
    m_view.message = tr("Сохранено: %1").arg(file.fileName());
}

} // namespace till
