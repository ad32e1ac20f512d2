// Saves the check when a plugin asks for it.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT SaveToFileLogic
{
public:
    virtual ~SaveToFileLogic();

    /// Saves the check with its plugin data, durably and in one step, in Singleton<CheckStore>. `fileName` and `paid`,
    /// the sum already paid in rubles, are not stored: this host keeps all checks in one place and takes a check's
    /// payments in one step. Ignores a null document. Throws BasicException when the check cannot be written, and for
    /// any document that is not a SaleDocument.
    virtual void save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double paid);
};
