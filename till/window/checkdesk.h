// The till behind the window: host, plugin, check and queue, all on the check thread.
#pragma once

#include "tillview.h"

#include <QtCore/QObject>

#include <functional>
#include <memory>

class QTimer;

namespace till {

class WindowCashier;

/// Lives on the check thread; the window reaches it only through queued calls. Everything that reads a file or a
/// database, or speaks to the service, happens here.
class CheckDesk : public QObject
{
    Q_OBJECT

public:
    /// `configFile` is read by start(). `cashier` is set up for the host there, too.
    explicit CheckDesk(const QString &configFile);
    ~CheckDesk() override;

    /// Puts host and plugin in place, and goes on with the check that was open when the till ended.
    void start();

    /// Carries a command out. One that fails leaves its reason as the view's message.
    void perform(const Command &command);

    /// Takes host and plugin away again.
    void finish();

    /// Shows questions of the host; to be answered from the window's thread.
    const QSharedPointer<WindowCashier> &cashier() const { return m_cashier; }

Q_SIGNALS:
    void changed(const till::TillView &view);

private:
    struct Parts;

    void attempt(const QString &waitingFor, const std::function<void()> &operation);
    void carryOut(const Command &command);
    void changeCheck(const Command &command);
    void look(const Command &command);
    void add(const QString &entry);
    void end(const CheckResult &result);
    void showReceipt(const QString &identifier);
    void saveReceipt(const QString &text);
    void warn(const QString &text);
    void ask(const std::optional<Question> &question);
    void refresh();
    void refreshLink();
    void watch();

    QString m_configFile;
    QSharedPointer<WindowCashier> m_cashier;
    std::unique_ptr<Parts> m_parts;
    QTimer *m_watch;
    TillView m_view;
};

} // namespace till
