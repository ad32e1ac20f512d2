// Anchors the class and its meta-object in the library.
#include "abstractdocument.h"

AbstractDocument::AbstractDocument(QObject *parent) : QObject(parent)
{}

AbstractDocument::~AbstractDocument() = default;
