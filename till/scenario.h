// A scenario: what the cashier and the customers do at the till, and what is expected to come of it.
#pragma once

#include "goods.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>
#include <optional>

namespace till {

/// One action of the cashier. Only the values that belong to its kind are set.
struct Step
{
    enum class Kind {
        Add,
        Change,
        Remove,
        Restore,
        Card,
        Phone,
        RemoveCard,
        Price,
        Subtotal,
        Spend,
        Hold,
        Park,
        Take,
        Close,
        Void
    };

    Kind kind = Kind::Price;
    Goods goods;                    ///< Add
    int line = 0;                   ///< Change, Remove: the line's number on the check.
    std::optional<double> quantity; ///< Change
    std::optional<Money> price;     ///< Change
    QString number;                 ///< Card, Phone; Take: which check, see CheckSession::take().
    std::chrono::seconds wait{0};   ///< Hold
};

/// What the cashier answers, in the order of the questions. What is not answered here is asked in the terminal.
struct Answers
{
    QList<bool> dialogs; ///< True: the first button ("retry"); false: the second ("remove").
    QStringList codes;   ///< Codes to enter; "give-up" leaves the prompt.
};

/// What must have come of a check; what is not named is not compared.
struct Expectation
{
    QMap<QString, QString> fields;       ///< By key of the scenario, in the form of CheckResult::fields().
    std::optional<int> queued;           ///< Requests that have not been accepted by the service yet.
    std::optional<QStringList> messages; ///< Parts of the texts shown to the cashier, one for each, in order.
};

struct ScenarioCheck
{
    QString place; ///< File and path, for reports.
    QString title;
    bool continued = false; ///< Goes on with the check that was left open.
    QList<Goods> goods;     ///< Put on the check before the first step.
    QList<Step> steps;
    Answers answers;
    Expectation expectation;
};

struct Scenario
{
    QString title;
    QList<ScenarioCheck> checks;
};

} // namespace till
