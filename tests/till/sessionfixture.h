// The vocabulary of the session's tests: a till on a data folder of its own that can be killed at any write.
#pragma once

#include "recordingsystem.h"
#include "till/checksession.h"
#include "till/endingqueue.h"
#include "till/journal.h"

#include <cashier/dialog.h>
#include <core/config.h>
#include <queue/queuedrain.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

/// Stands for SIGKILL: nothing in the program may catch it.
struct Killed
{
};

/// Saves like the till until the process is "killed", before the write or after it.
class MortalSave : public SaveToFileLogic
{
public:
    void save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double paid) override
    {
        const int number = ++count;
        if (number == killBefore)
            throw Killed();
        SaveToFileLogic::save(document, fileName, paid);
        if (number == killAfter)
            throw Killed();
    }
    int count = 0;
    int killBefore = 0;
    int killAfter = 0;
};

class DialogDouble : public Dialog
{
public:
    MOCK_METHOD(bool, question, (const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int), (override));
};

/// A till on a data folder of its own, which can be started anew as after a kill.
class Session : public testing::Test
{
protected:
    Session()
    {
        QFile ini(folder.filePath(u"till.ini"_s));
        EXPECT_TRUE(ini.open(QFile::WriteOnly));
        ini.write("[Host]\ndataFolder = " + QFile::encodeName(folder.path()) + "\n");
        ini.close();
        Singleton<Config>::replace(QSharedPointer<Config>::create(ini.fileName()));
        MockFactory<SaveToFileLogic>::install(disk);
        MockFactory<Dialog>::install(dialog);
        start();
    }
    ~Session() override
    {
        session.reset();
        Singleton<DBQueueBroker>::replace(nullptr);
        Singleton<ActivityNotifier>::replace(nullptr);
        MockFactory<SaveToFileLogic>::clear();
        MockFactory<Dialog>::clear();
        Singleton<Config>::replace(nullptr);
    }

    std::optional<till::CheckResult> start()
    {
        session.reset();
        system.reset(); // Before its successor registers.
        system = std::make_unique<RecordingSystem>();
        queue = QSharedPointer<till::EndingQueue>::create();
        Singleton<DBQueueBroker>::replace(queue);
        session = std::make_unique<till::CheckSession>(*system, *queue, journal);
        return session->resume();
    }

    static QSharedPointer<GoodsItem> item(qint64 kopecks)
    {
        auto item = QSharedPointer<GoodsItem>::create();
        item->setPrice(Money::fromKopecks(kopecks));
        return item;
    }

    /// A check with two lines and a priced card, with nothing noted yet.
    void openPriced()
    {
        session->open();
        session->addGoods(item(5000));
        session->addGoods(item(3000));
        session->addCard(ECardNumberType::Manual, u"777"_s);
        session->price();
        system->takeCalls();
    }

    QList<QJsonObject> booked() const
    {
        QList<QJsonObject> checks;
        QFile file(journal.fileName());
        if (file.open(QFile::ReadOnly)) {
            for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine())
                checks.append(QJsonDocument::fromJson(line).object());
        }
        return checks;
    }

    /// What is on the queue, delivered in order: "post BASKET".
    QStringList deliver()
    {
        QStringList sent;
        QueueDrain drain;
        drain.setHandler(u"kvo"_s, [&sent](const QJsonObject &event) {
            const QString basket = event.value(u"payload"_s).toObject().value(u"basket"_s).toString();
            sent.append(event.value(u"url"_s).toString() + u' ' + basket);
        });
        drain.start();
        EXPECT_TRUE(drain.waitUntilDrained(30s));
        drain.stop();
        return sent;
    }

    QTemporaryDir folder;
    QSharedPointer<MortalSave> disk = QSharedPointer<MortalSave>::create();
    QSharedPointer<testing::NiceMock<DialogDouble>> dialog = QSharedPointer<testing::NiceMock<DialogDouble>>::create();
    till::Journal journal{folder.filePath(u"journal.jsonl"_s)};
    QSharedPointer<till::EndingQueue> queue;
    std::unique_ptr<RecordingSystem> system;
    std::unique_ptr<till::CheckSession> session;
};
