// A customer: anchors the class and its meta-object in the library.
#include "client.h"

Client::Client(QObject *parent) : QObject(parent)
{}

Client::~Client() = default;
