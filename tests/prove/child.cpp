// Processes by QProcess; every wait has a bound.
#include "child.h"

#include <signal.h>
#include <sys/prctl.h>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

constexpr int patience = 30'000; // milliseconds

}

Child::Child(const QString &program, const QString &outputFile)
{
    m_process.setProgram(program);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(outputFile, QIODevice::Append);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

Child::~Child()
{
    kill();
}

void Child::start(const QStringList &arguments)
{
    m_killed = false;
    m_process.setArguments(arguments);
    m_process.start();
    if (!m_process.waitForStarted(patience))
        throw std::runtime_error(qPrintable(m_process.program() + u": "_s + m_process.errorString()));
}

bool Child::isRunning()
{
    return !wait(std::chrono::milliseconds(0));
}

bool Child::wait(std::chrono::milliseconds time)
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(static_cast<int>(time.count()));
}

bool Child::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return false;
    m_process.kill();
    if (!m_process.waitForFinished(patience))
        throw std::runtime_error(qPrintable(m_process.program() + u": cannot be killed"_s));
    m_killed = m_process.exitStatus() == QProcess::CrashExit;
    return m_killed;
}

int Child::status() const
{
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

} // namespace prove
