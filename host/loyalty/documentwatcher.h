// Base of what works on the host's current check.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT DocumentWatcher
{
public:
    DocumentWatcher();
    virtual ~DocumentWatcher();
    Q_DISABLE_COPY_MOVE(DocumentWatcher)

    /// The host has opened another check; null when none is open.
    virtual void setDocument(const QSharedPointer<AbstractDocument> &document);

protected:
    const QSharedPointer<AbstractDocument> &currentDocument() const { return m_document; }

private:
    QSharedPointer<AbstractDocument> m_document;
};
