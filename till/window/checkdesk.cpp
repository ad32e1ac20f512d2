// Carries out what the window wants, and shows what came of it.
#include "checkdesk.h"

#include "checkdeskparts.h"
#include "listings.h"
#include "till/receipt.h"
#include "till/receiptprinter.h"
#include "windowcashier.h"

#include <core/basicexception.h>
#include <core/singleton.h>
#include <net/linkstate.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// How often the line to the service and the queue are looked at while nothing is done.
constexpr std::chrono::milliseconds timeBetweenLooks{1000};

QString waitingText(Command::Kind kind)
{
    using Kind = Command::Kind;
    switch (kind) {
    case Kind::Card:
    case Kind::Phone:
        return CheckDesk::tr("Ищем покупателя");
    case Kind::Price:
        return CheckDesk::tr("Рассчитываем чек");
    case Kind::Spend:
        return CheckDesk::tr("Списываем баллы");
    case Kind::Close:
        return CheckDesk::tr("Закрываем чек");
    case Kind::Void:
        return CheckDesk::tr("Аннулируем чек");
    default:
        return CheckDesk::tr("Выполняем");
    }
}

} // namespace

CheckDesk::CheckDesk(const QString &configFile)
    : m_configFile(configFile),
      m_cashier(
          QSharedPointer<WindowCashier>::create([this](const std::optional<Question> &question) { ask(question); },
                                                [this](const QString &text) { warn(text); })),
      m_watch(new QTimer(this))
{
    connect(m_watch, &QTimer::timeout, this, &CheckDesk::watch);
}

CheckDesk::~CheckDesk() = default;

void CheckDesk::start()
{
    try {
        m_parts = std::make_unique<Parts>(m_configFile, m_cashier);
    } catch (const BasicException &error) {
        m_view.fault = error.text().ru();
        Q_EMIT changed(m_view);
        return;
    }
    m_view.isDark = Singleton<Config>::instance()->getString(u"Till:theme"_s, u"light"_s) == "dark"_L1;
    m_cashier->setLoyaltySystem(&m_parts->till.system());
    attempt(tr("Проверяем, не остался ли открытый чек"), [this] {
        m_view.isReady = true;
        m_parts->till.host().queue().findProblem();
        if (const std::optional<CheckResult> ended = m_parts->till.session().resume()) {
            end(*ended);
            warn(tr("Касса была прервана. Чек, который закрывался, завершён."));
        } else if (m_parts->till.session().isOpen()) {
            warn(tr("Касса была прервана. Чек восстановлен, можно продолжать."));
        }
        if (const QString reason = m_parts->till.session().loyaltyOff(); !reason.isEmpty())
            warn(tr("Баллы не работают: %1").arg(reason));
    });
    m_watch->start(timeBetweenLooks);
}

void CheckDesk::finish()
{
    m_watch->stop();
    m_cashier->setLoyaltySystem(nullptr);
    m_parts.reset();
}

void CheckDesk::perform(const Command &command)
{
    m_view.message.clear();
    m_view.isWarning = false;
    m_view.receipt.clear();
    m_view.listing = {};
    attempt(waitingText(command.kind), [&] { carryOut(command); });
}

void CheckDesk::attempt(const QString &waitingFor, const std::function<void()> &operation)
{
    m_view.waitingFor = waitingFor;
    m_view.waitingSince = QDateTime::currentDateTime();
    Q_EMIT changed(m_view);
    try {
        operation();
    } catch (const BasicException &error) {
        warn(error.text().ru());
    } catch (const std::exception &error) {
        warn(tr("Не выполнено: %1").arg(QString::fromUtf8(error.what())));
    }
    m_view.waitingFor.clear();
    ++m_view.commandsDone;
    refresh();
    Q_EMIT changed(m_view);
}

void CheckDesk::carryOut(const Command &command)
{
    CheckSession &session = m_parts->till.session();
    switch (command.kind) {
    case Command::Kind::Price:
        return session.price();
    case Command::Kind::Spend:
        return session.spend();
    case Command::Kind::Close:
        return end(session.close());
    case Command::Kind::Void:
        return end(session.voidCheck());
    case Command::Kind::Park:
        return session.park();
    case Command::Kind::Take:
        if (const std::optional<CheckResult> ended = session.take(command.text))
            end(*ended);
        return;
    case Command::Kind::Add:
    case Command::Kind::Change:
    case Command::Kind::Remove:
    case Command::Kind::Restore:
    case Command::Kind::Card:
    case Command::Kind::Phone:
        return changeCheck(command);
    default:
        return look(command);
    }
}

void CheckDesk::changeCheck(const Command &command)
{
    CheckSession &session = m_parts->till.session();
    switch (command.kind) {
    case Command::Kind::Change:
        if (command.text.startsWith(u'='))
            return session.changeGoods(command.line, std::nullopt, parsePrice(command.text.mid(1)));
        return session.changeGoods(command.line, parseQuantity(command.text), std::nullopt);
    case Command::Kind::Remove:
        return session.removeGoods(command.line);
    case Command::Kind::Restore:
        return session.restoreGoods();
    case Command::Kind::Add:
        return add(command.text);
    default:
        if (!session.isOpen())
            session.open();
        session.addCard(command.kind == Command::Kind::Phone ? ECardNumberType::Phone : ECardNumberType::Scanned,
                        command.text);
    }
}

void CheckDesk::add(const QString &entry)
{
    const QList<Goods> found = m_parts->catalogue.find(entry);
    if (found.isEmpty())
        throw BasicException(tr("Товар не найден: %1. Проверьте код или введите часть названия.").arg(entry));
    if (found.size() > 1) {
        m_view.listing = goodsListing(found);
        return;
    }
    if (!m_parts->till.session().isOpen())
        m_parts->till.session().open();
    m_parts->till.session().addGoods(makeItem(found.constFirst()));
}

void CheckDesk::end(const CheckResult &result)
{
    m_parts->till.drain().wakeUp();
    m_view.receipt = receiptText(result, queueStatus());
}

void CheckDesk::warn(const QString &text)
{
    m_view.message = text;
    m_view.isWarning = true;
}

void CheckDesk::ask(const std::optional<Question> &question)
{
    refresh();
    m_view.question = question;
    if (question)
        m_view.question->points = m_view.check.offered;
    m_view.waitingSince = QDateTime::currentDateTime();
    Q_EMIT changed(m_view);
}

void CheckDesk::refresh()
{
    const CheckSession &session = m_parts->till.session();
    m_view.isOpen = session.isOpen();
    m_view.isRestorable = session.canRestoreGoods();
    m_view.check = m_view.isOpen ? session.result() : CheckResult();
    refreshLink();
}

void CheckDesk::refreshLink()
{
    const LinkState::State link = Singleton<LinkState>::instance()->state();
    m_view.isServiceReachable = link.isReachable;
    m_view.serviceSince = link.since;
    m_view.queue = queueStatus();
}

void CheckDesk::watch()
{
    const auto shown = [this] {
        return std::tuple(m_view.isServiceReachable, m_view.serviceSince, m_view.queue.waiting,
                          m_view.queue.deadLetters);
    };
    const auto before = shown();
    refreshLink();
    if (shown() != before)
        Q_EMIT changed(m_view);
}

} // namespace till
