// Confirmation of the customer by a code. The code is written nowhere: not to the log, not into an exception.
#include "verificationlogic.h"

#include <cashier/cashierui.h>
#include <core/basicexception.h>
#include <core/currenttime.h>
#include <core/mockfactory.h>
#include <core/singleton.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

using std::chrono::milliseconds;

// Compares digests, which all have one length, in full: the time it takes reveals nothing about the code.
bool isSameCode(const QString &entered, const QString &code)
{
    const QByteArray a = QCryptographicHash::hash(entered.toUtf8(), QCryptographicHash::Sha256);
    const QByteArray b = QCryptographicHash::hash(code.toUtf8(), QCryptographicHash::Sha256);
    unsigned difference = 0;
    for (qsizetype i = 0; i < a.size(); ++i)
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
    return difference == 0;
}

tr::Tr afterWrongCode(const tr::Tr &prompt, int attemptsLeft)
{
    return tr::Tr(u"Неверный код. Осталось попыток: %1.\n%2"_s.arg(QString::number(attemptsLeft), prompt.ru()));
}

} // namespace

VerificationLogic::~VerificationLogic() = default;

void VerificationLogic::verify(const QString &code, const tr::Tr &prompt, int)
{
    const auto clock = MockFactory<CurrentTime>::create();
    const auto ui = Singleton<CashierUi>::instance();
    const QDateTime deadline = clock->currentDateTime().addMSecs(milliseconds(timeLimit).count());
    const tr::Tr firstPrompt = prompt.isEmpty() ? tr::Tr(u"Введите код подтверждения, полученный клиентом"_s) : prompt;

    for (int attemptsLeft = maxAttempts; attemptsLeft > 0; --attemptsLeft) {
        const milliseconds timeLeft(clock->currentDateTime().msecsTo(deadline));
        const auto entered =
            timeLeft.count() > 0
                ? ui->enterCode(attemptsLeft == maxAttempts ? firstPrompt : afterWrongCode(firstPrompt, attemptsLeft),
                                std::min(timeLeft, milliseconds(timeLimit)), attemptsLeft)
                : std::nullopt;
        if (clock->currentDateTime() >= deadline)
            throw BasicException(u"Время для ввода кода подтверждения истекло"_s);
        if (!entered)
            throw BasicException(u"Ввод кода подтверждения отменён"_s);
        if (!code.isEmpty() && isSameCode(entered->trimmed(), code))
            return;
    }
    throw BasicException(u"Код подтверждения трижды введён неверно"_s);
}
