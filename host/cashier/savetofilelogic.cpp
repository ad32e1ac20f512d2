// Saving the check at the moments when a plugin asks for it.
#include "savetofilelogic.h"

#include <core/basicexception.h>
#include <document/documentstore.h>

using namespace Qt::Literals::StringLiterals;

SaveToFileLogic::~SaveToFileLogic() = default;

void SaveToFileLogic::save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double)
{
    if (!document)
        return;
    const auto sale = document.objectCast<SaleDocument>();
    if (!sale)
        throw BasicException(
            u"Документ %1 не сохранён: сохраняются только чеки продажи"_s.arg(document->getIdentifier()));
    DocumentStore().save(*sale, fileName);
}
