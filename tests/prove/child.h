// One process of the shop, started and ended by the proof.
#pragma once

#include <QtCore/QProcess>

namespace prove {

/// Ends with the proof, however that ends.
class Child
{
public:
    /// What the process prints is appended to `outputFile`.
    Child(const QString &program, const QString &outputFile);
    ~Child();
    Q_DISABLE_COPY_MOVE(Child)

    /// Throws std::runtime_error when the program cannot be started.
    void start(const QStringList &arguments);

    bool isRunning();

    /// Waits for its end, at most `time`.
    [[nodiscard]] bool wait(std::chrono::milliseconds time);

    /// SIGKILL. False when it had ended by itself before.
    bool kill();

    /// After its end: killed by kill(), or -1 for the end by another signal, or its exit status.
    bool wasKilled() const { return m_killed; }
    int status() const;

private:
    QProcess m_process;
    bool m_killed = false;
};

} // namespace prove
