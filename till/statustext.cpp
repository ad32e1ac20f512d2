// Reads beside a till that may be at work, and runs no foreign code. Whether the queue works is found out by a write to
// it, which makes its file when it is missing.
#include "statustext.h"

#include "checkview.h"
#include "loyaltyplugin.h"
#include "queuecommand.h"

#include <core/basicexception.h>
#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString loyaltyText(TillHost &host)
{
    QString problem = host.queue().findProblem();
    try {
        LoyaltyPlugin::inspect(host.pluginFolder());
    } catch (const BasicException &error) {
        problem = error.text().ru();
    }
    return problem.isEmpty() ? u"Бонусы работают\n"_s
                             : u"Бонусы не работают: "_s + plainText(problem, longestReason) + u'\n';
}

QString openCheckText(CheckStore &store, const QString &configFile)
{
    const auto document = store.restore();
    const QString notice = plainText(store.takeNotices().join(u' '), longestReason);
    if (!document)
        return (notice.isEmpty() ? u"Открытого чека нет"_s : notice) + u'\n';
    const auto card = document->getCardRecords().value(0);
    const CheckResult result = resultOf(*document, card, card ? card->getPointsForEarn().toDouble() : 0);
    const TillState state = TillState::readFrom(*document);
    return checkView(result) + waitingFor(state) + u'\n' +
           (state.ending == TillState::Ending::None ? waysToGoOn(configFile)
                                                    : u"Завершить: kvo-till run --config %1\n"_s.arg(configFile));
}

QString queueText(TillHost &host)
{
    const auto status = host.queue().statusIfItWorks();
    return status ? statusText(*status) + u'\n' : u"Очередь не работает\n"_s;
}

} // namespace

QString tillStatusText(TillHost &host, CheckStore &store, const QString &configFile)
{
    QString text = loyaltyText(host) + openCheckText(store, configFile);
    return text + keptChecksView(store.checks()) + queueText(host);
}

} // namespace till
