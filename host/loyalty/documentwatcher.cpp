#include "documentwatcher.h"

DocumentWatcher::DocumentWatcher() = default;

DocumentWatcher::~DocumentWatcher() = default;

void DocumentWatcher::setDocument(const QSharedPointer<AbstractDocument> &document)
{
    m_document = document;
}
