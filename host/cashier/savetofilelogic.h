// Saving the check at the moments when a plugin asks for it.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT SaveToFileLogic
{
public:
    virtual ~SaveToFileLogic();

    /// Saves the check with its plugin data, durably and in one step. An empty `fileName` means the open check's own
    /// file; `paid` is the sum already paid, in rubles. A null document is nothing to save. Throws BasicException when
    /// the check cannot be written.
    virtual void save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double paid);
};
