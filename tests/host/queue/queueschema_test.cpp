// A queue that an older version has left is taken over whole, or not touched.
#include "queuefixture.h"

namespace {

// As version 1 wrote it; never to be changed.
constexpr const char *version1[] = {
    "PRAGMA journal_mode = WAL",
    "CREATE TABLE event (id INTEGER PRIMARY KEY AUTOINCREMENT, owner TEXT NOT NULL, basket TEXT, state TEXT NOT NULL, "
    "attempts INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL, next_attempt INTEGER NOT NULL DEFAULT 0, "
    "lease INTEGER, rejected INTEGER, last_error TEXT, event TEXT NOT NULL)",
    "CREATE INDEX event_order ON event (owner, basket, id)",
    "CREATE INDEX event_next ON event (state, owner, attempts, id)",
    "PRAGMA user_version = 1",
    "INSERT INTO event (owner, basket, state, created, lease, event) VALUES "
    "('kvo', 'a', 'sending', 1, 4711, '{\"url\":\"/a1\"}'), ('kvo', 'a', 'waiting', 2, NULL, '{\"url\":\"/a2\"}'), "
    "('kvo', 'b', 'aside', 3, NULL, '{\"url\":\"/b1\"}')",
};

} // namespace

class QueueSchemaTest : public QueueTest
{
protected:
    QueueSchemaTest()
    {
        makeFolder();
        for (const char *statement : version1)
            sql(QString::fromLatin1(statement));
    }
};

TEST_F(QueueSchemaTest, OlderQueueIsTakenOverWithAllItHolds)
{
    EXPECT_EQ(drain(), u"a1 a2"_s);
    EXPECT_EQ(broker.status().setAside, 1);
    EXPECT_EQ(sql(u"PRAGMA user_version"_s), 3);
}

TEST_F(QueueSchemaTest, MigrationThatFailsHalfwayLeavesTheOldVersion)
{
    sql(u"ALTER TABLE event ADD COLUMN discard_reason TEXT"_s); // the second statement of the step will fail
    EXPECT_THROW(broker.status(), BasicException);
    EXPECT_EQ(sql(u"PRAGMA user_version"_s), 1);
    EXPECT_EQ(sql(u"SELECT COUNT(*) FROM pragma_table_info('event') WHERE name = 'discarded'"_s), 0);
    EXPECT_EQ(sql(u"SELECT COUNT(*) FROM event"_s), 3);
}
