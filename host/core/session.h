// Who is signed in at the till.
#pragma once

#include <poshost_export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

class POSHOST_EXPORT User
{
public:
    User() = default;
    User(const QVariant &code, const QString &name) : m_code(code), m_name(name) {}

    /// The cashier's identifier in the retailer's books.
    QVariant getCode() const { return m_code; }
    QString getName() const { return m_name; }

private:
    QVariant m_code;
    QString m_name;
};

/// The till's working session; one per process through Singleton<Session>.
class POSHOST_EXPORT Session
{
public:
    Session();
    virtual ~Session();

    /// The cashier at the till; never null, an empty user when nobody has signed in.
    virtual QSharedPointer<User> getUser() const;
    virtual void setUser(const QSharedPointer<User> &user);

private:
    QSharedPointer<User> m_user;
};
