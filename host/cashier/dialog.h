// Questions to the cashier.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

class POSHOST_EXPORT Dialog
{
public:
    virtual ~Dialog();

    /// Asks a question with two buttons through the program's CashierUi and waits for the answer.
    /// `firstValue` and `secondValue` are what the buttons stand for; true is returned when the chosen one is not 0.
    virtual bool question(const tr::Tr &message, int firstValue, const tr::Tr &first, const tr::Tr &second,
                          int secondValue);
};
