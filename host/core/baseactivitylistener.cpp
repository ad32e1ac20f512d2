#include <core/baseactivitylistener.h>

BaseActivityListener::BaseActivityListener(QObject *parent) : QObject(parent)
{}

BaseActivityListener::~BaseActivityListener() = default;
