// The default user interface: nobody answers.
#include "cashierui.h"

CashierUi::~CashierUi() = default;

bool CashierUi::ask(const tr::Tr &, const tr::Tr &, const tr::Tr &)
{
    return false;
}

std::optional<QString> CashierUi::enterCode(const tr::Tr &, std::chrono::milliseconds, int)
{
    return std::nullopt;
}

void CashierUi::show(const tr::Tr &)
{}
