// The exception's destructor exists only here, so that a plugin and the host share its type information and can catch
// each other's exceptions.
#include <core/basicexception.h>

BasicException::BasicException(const tr::Tr &text) : m_text(text), m_what(text.ru().toUtf8())
{}

BasicException::~BasicException() = default;
