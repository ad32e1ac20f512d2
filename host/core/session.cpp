#include <core/session.h>

Session::Session() : m_user(QSharedPointer<User>::create())
{}

Session::~Session() = default;

QSharedPointer<User> Session::getUser() const
{
    return m_user;
}

void Session::setUser(const QSharedPointer<User> &user)
{
    m_user = user ? user : QSharedPointer<User>::create();
}
