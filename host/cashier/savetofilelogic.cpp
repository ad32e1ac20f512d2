#include "savetofilelogic.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <core/singleton.h>

using namespace Qt::Literals::StringLiterals;

SaveToFileLogic::~SaveToFileLogic() = default;

void SaveToFileLogic::save(const QSharedPointer<AbstractDocument> &document, const QString &, double)
{
    if (!document)
        return;
    const auto sale = document.objectCast<SaleDocument>();
    if (!sale)
        throw BasicException(
            u"Документ %1 не сохранён: сохраняются только чеки продажи"_s.arg(document->getIdentifier()));
    Singleton<CheckStore>::instance()->save(*sale);
}
