// The vocabulary of the queue's tests: a queue of its own in a temporary folder, pushed through the real broker and
// drained step by step, under a clock that the test sets, to a receiver that notes what it gets.
#pragma once

#include <core/basicexception.h>
#include <core/config.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class QueueTest : public testing::Test
{
protected:
    QueueTest() { configure(file); }
    ~QueueTest() override { Singleton<Config>::replace(nullptr); }

    void configure(const QString &database)
    {
        QFile ini(folder.filePath(u"till.ini"_s));
        EXPECT_TRUE(ini.open(QFile::WriteOnly));
        ini.write("[Queue]\ndatabase = " + QFile::encodeName(database) + "\n");
        ini.close();
        Singleton<Config>::replace(QSharedPointer<Config>::create(ini.fileName()));
    }

    /// Pushes the event "<order><number>" of an order, for instance "a1".
    void push(const QString &name, const QString &owner = u"kvo"_s)
    {
        const QJsonObject payload{{u"basket"_s, name.left(1)}};
        broker.push(owner, {{u"url"_s, u"http://127.0.0.1/api/"_s + name}, {u"payload"_s, payload}}, {});
    }

    void pushAll(const QString &names)
    {
        for (const QString &name : names.split(u' '))
            push(name);
    }

    /// Steps until nothing is due; returns what was sent meanwhile, failed attempts included: "a1 b1".
    QString drain(QueueDelivery &drained)
    {
        sent.clear();
        while (drained.step())
            ;
        return sent.join(u' ');
    }
    QString drain() { return drain(delivery); }

    QueueDelivery makeDelivery()
    {
        return QueueDelivery(file, {{u"kvo"_s, [this](const QJsonObject &event) { receive(event); }}},
                             {[this] { return now; }, [] { return 0.5; }});
    }

    /// A connection of the test's own, as somebody with a database tool would have.
    QVariant sql(const QString &statement, const QString &database = {})
    {
        QVariant result;
        {
            QSqlDatabase other = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"test"_s);
            other.setDatabaseName(database.isEmpty() ? file : database);
            EXPECT_TRUE(other.open());
            QSqlQuery query(other);
            EXPECT_TRUE(query.exec(statement)) << qPrintable(statement);
            result = query.next() ? query.value(0) : QVariant();
        }
        QSqlDatabase::removeDatabase(u"test"_s);
        return result;
    }

    QTemporaryDir folder;
    QString file = folder.filePath(u"data/queue.db"_s);
    DBQueueBroker broker;
    QueueTime now{1'700'000'000'000ms};
    QStringList sent;
    QSet<QString> unreachable; ///< Names of events whose sending fails.
    QSet<QString> refused;     ///< Names of events that are rejected.
    bool serviceDown = false;
    QueueDelivery delivery = makeDelivery();

private:
    void receive(const QJsonObject &event)
    {
        const QString name = event.value(u"url").toString().section(u'/', -1);
        sent.append(name);
        if (serviceDown || unreachable.contains(name))
            throw std::runtime_error("connection refused");
        if (refused.contains(name))
            throw RejectionException(u"заказ не найден"_s);
    }
};
