// A customer as the host knows one.
#pragma once

#include <document/storedfield.h>

#include <QtCore/QDate>
#include <QtCore/QString>

class Client
{
public:
    enum class Sex : int { Male = 0, Female = 1, Last = Female };

    /// The customer's account number in the loyalty service.
    QString getIdClient() const { return m_idClient; }
    void setIdClient(const QString &id) { m_idClient = id; }

    QString getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    /// Invalid when unknown.
    QDate getBirthday() const { return m_birthday; }
    void setBirthday(const QDate &birthday) { m_birthday = birthday; }

    Sex getSex() const { return m_sex; }
    void setSex(Sex sex) { m_sex = sex; }

    QString getEmail() const { return m_email; }
    void setEmail(const QString &email) { m_email = email; }

    QString getPhoneNumber() const { return m_phoneNumber; }
    void setPhoneNumber(const QString &phoneNumber) { m_phoneNumber = phoneNumber; }

    static constexpr auto storedFields()
    {
        return std::tuple{
            StoredField("idClient", &Client::m_idClient), StoredField("name", &Client::m_name),
            StoredField("birthday", &Client::m_birthday), StoredField("sex", &Client::m_sex),
            StoredField("email", &Client::m_email),       StoredField("phoneNumber", &Client::m_phoneNumber)};
    }

private:
    QString m_idClient;
    QString m_name;
    QDate m_birthday;
    Sex m_sex = Sex::Male;
    QString m_email;
    QString m_phoneNumber;
};
