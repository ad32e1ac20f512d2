#include "dialog.h"

#include <cashier/cashierui.h>
#include <core/singleton.h>

Dialog::~Dialog() = default;

bool Dialog::question(const tr::Tr &message, int firstValue, const tr::Tr &first, const tr::Tr &second, int secondValue)
{
    const bool firstChosen = Singleton<CashierUi>::instance()->ask(message, first, second);
    return (firstChosen ? firstValue : secondValue) != 0;
}
