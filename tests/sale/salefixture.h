// A shop for whole sales: the till with the loaded plugin and the service's stand-in as processes of their own, on
// loopback and on a fresh folder.
#pragma once

#include <gtest/gtest.h>

#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <memory>

class SaleTest : public testing::Test
{
protected:
    SaleTest();
    ~SaleTest() override;

    /// Starts the service, on the port it had before, or on a free one.
    void startService();
    void stopService();

    /// Has the service do something wrong, see the simulator's README.
    void addFault(const QJsonObject &fault);

    /// How many requests of this method the service has received since it was started.
    int requestsOf(const QString &method);

    /// Starts the till with a scenario: JSON text, or the name of a sample scenario; none with an empty text.
    std::unique_ptr<QProcess> startTill(const QByteArray &scenario, const QStringList &options = {});

    /// Runs the till to its end and expects `status`; returns what it printed.
    QString runTill(const QByteArray &scenario, int status = 0, const QStringList &options = {});

    /// Runs `kvo-till drain` and expects it to deliver everything.
    void drain();

    static void kill(QProcess &process);

    /// Waits until the condition holds, at most half a minute.
    static bool waitFor(const std::function<bool()> &condition);

    /// Expects the till's journal and the service's ledger to agree, with this many checks in the journal.
    void expectEqualBooks(int checks);

    int checksInJournal() const;

    QTemporaryDir folder;

private:
    QJsonObject exchange(const QByteArray &method, const QString &path, const QJsonObject &body = {}) const;

    QProcess m_service;
    int m_port = 0;
    int m_scenarios = 0;
};
