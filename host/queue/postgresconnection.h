// The queue on a PostgreSQL server.
#pragma once

#include "queueconnection.h"

class PostgresConnection : public QueueConnection
{
public:
    explicit PostgresConnection(const QueueSettings &settings);

    /// Asks the server: it may have closed the connection since its last use.
    bool isUsable() override;

    std::unique_ptr<QueueLease> newLease() const override;
    void begin() override { execute(u"BEGIN ISOLATION LEVEL READ COMMITTED"); }
    void commit() override { execute(u"COMMIT"); }
    QStringView rowLock() const override { return u"FOR UPDATE OF e SKIP LOCKED"; }

protected:
    void open(Commits commits, Missing missing) override;
    QString problemText(const QSqlError &error) const override;

private:
    QueueSettings m_settings;
};
