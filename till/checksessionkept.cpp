// Parked checks: put aside by the cashier, by a kill, or because they cannot go on now.
#include "checksession.h"
#include "loyalty.h"

#include <cashier/cashierui.h>
#include <core/basicexception.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

std::optional<CheckResult> CheckSession::resume()
{
    std::optional<CheckResult> ended;
    if (const auto saved = m_store->restore())
        ended = resumeDocument(saved);
    reportNotices();
    endWaiting();
    return ended;
}

std::optional<CheckResult> CheckSession::resumeDocument(const QSharedPointer<SaleDocument> &document)
{
    try {
        adopt(document);
        if (!m_document->getCardRecords().isEmpty() && !card())
            throw BasicException(u"на чеке карта, а бонусы не работают: "_s + loyaltyOff());
        if (m_state.ending != TillState::Ending::None)
            return completeEnding();
        dropUnidentifiedCard();
        settleOrder();
        // The customer may have spent or earned points elsewhere meanwhile.
        if (m_state.order == TillState::Order::InStep && isPriced() && !isPaidWithPoints())
            m_state.order = TillState::Order::Behind;
    } catch (const BasicException &error) {
        setAside(error.text().ru());
    }
    return std::nullopt;
}

void CheckSession::setAside(const QString &reason)
{
    m_store->park(reason);
    releaseDocument();
    Singleton<CashierUi>::instance()->show(tr::Tr(u"Чек отложен: %1. Можно начать новый чек"_s.arg(reason)));
}

void CheckSession::park()
{
    requireOpen();
    if (!m_system.beforePutoutCheck())
        throw BasicException(refusalText(m_system.getLastErrorString()));
    putAway({}, CheckStore::Standing::Parked);
    releaseDocument();
    m_system.afterPutoutCheck();
    reportNotices();
}

void CheckSession::putAway(const QString &reason, CheckStore::Standing standing)
{
    if (!m_store->park(reason, standing)) {
        save();
        m_store->park(reason, standing);
    }
}

std::optional<CheckResult> CheckSession::take(const QString &which)
{
    if (isOpen())
        throw BasicException(u"Сначала закройте или отложите открытый чек"_s);
    const QList<CheckStore::KeptCheck> kept = keptChecks();
    bool isNumber = false;
    const int number = which.toInt(&isNumber);
    if (isNumber && (number < 1 || number > kept.size()))
        throw BasicException(u"Отложенного чека %1 нет"_s.arg(which));
    const auto ended = resumeDocument(m_store->resume(isNumber ? kept.at(number - 1).identifier : which));
    if (isOpen())
        m_system.revealCheck();
    return ended;
}

QList<CheckStore::KeptCheck> CheckSession::keptChecks() const
{
    QList<CheckStore::KeptCheck> kept = m_store->checks();
    kept.removeIf([](const auto &check) { return check.standing == CheckStore::Standing::Current; });
    return kept;
}

} // namespace till
