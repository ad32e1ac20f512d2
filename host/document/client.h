// A customer as the host knows one.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDate>
#include <QtCore/QObject>
#include <QtCore/QString>

class POSHOST_EXPORT Client : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString idClient READ getIdClient WRITE setIdClient)
    Q_PROPERTY(QString name READ getName WRITE setName)
    Q_PROPERTY(QDate birthday READ getBirthday WRITE setBirthday)
    Q_PROPERTY(int sex READ sexCode WRITE setSexCode)
    Q_PROPERTY(QString email READ getEmail WRITE setEmail)
    Q_PROPERTY(QString phoneNumber READ getPhoneNumber WRITE setPhoneNumber)

public:
    enum class Sex : int { Male = 0, Female = 1 };
    Q_ENUM(Sex)

    explicit Client(QObject *parent = nullptr);
    ~Client() override;

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

private:
    int sexCode() const { return static_cast<int>(m_sex); }
    void setSexCode(int code) { m_sex = static_cast<Sex>(code); }

    QString m_idClient;
    QString m_name;
    QDate m_birthday;
    Sex m_sex = Sex::Male;
    QString m_email;
    QString m_phoneNumber;
};
