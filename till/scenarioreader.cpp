// Reads scenario files strictly: a mistyped key must not silently turn a check of the system into no check at all.
#include "scenarioreader.h"

#include "jsonnode.h"

#include <core/basicexception.h>

#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr int highestLine = 9999;
constexpr int longestHold = 600; // seconds

void readChange(const JsonNode &node, Step &step)
{
    node.requireObject({u"line"_s, u"quantity"_s, u"price"_s});
    step.line = node.at(u"line"_s).wholeNumber(1, highestLine);
    if (node.has(u"quantity"_s))
        step.quantity = node.at(u"quantity"_s).quantity();
    if (node.has(u"price"_s))
        step.price = node.at(u"price"_s).amount();
    if (!step.quantity && !step.price)
        node.fail(u"нужно \"quantity\" или \"price\""_s);
}

/// A step with nothing to say beyond its name is a text, any other an object with its name as the only key.
struct StepKind
{
    QString name;
    Step::Kind kind;
    std::function<void(const JsonNode &, Step &)> readValue;
};

const QList<StepKind> &stepKinds()
{
    using Kind = Step::Kind;
    static const auto readNumber = [](const JsonNode &node, Step &step) { step.number = node.text(); };
    static const QList<StepKind> kinds{
        {u"add"_s, Kind::Add, [](const JsonNode &node, Step &step) { step.goods = readGoods(node); }},
        {u"change"_s, Kind::Change, readChange},
        {u"remove"_s, Kind::Remove,
         [](const JsonNode &node, Step &step) { step.line = node.wholeNumber(1, highestLine); }},
        {u"restore"_s, Kind::Restore, nullptr},
        {u"card"_s, Kind::Card, readNumber},
        {u"phone"_s, Kind::Phone, readNumber},
        {u"nocard"_s, Kind::RemoveCard, nullptr},
        {u"price"_s, Kind::Price, nullptr},
        {u"subtotal"_s, Kind::Subtotal, nullptr},
        {u"spend"_s, Kind::Spend, nullptr},
        {u"hold"_s, Kind::Hold,
         [](const JsonNode &node, Step &step) { step.wait = std::chrono::seconds(node.wholeNumber(1, longestHold)); }},
        {u"park"_s, Kind::Park, nullptr},
        {u"take"_s, Kind::Take, readNumber},
        {u"close"_s, Kind::Close, nullptr},
        {u"void"_s, Kind::Void, nullptr},
    };
    return kinds;
}

QStringList stepNames(bool withValue)
{
    QStringList names;
    for (const StepKind &kind : stepKinds()) {
        if (static_cast<bool>(kind.readValue) == withValue)
            names.append(kind.name);
    }
    return names;
}

Step readStep(const JsonNode &node)
{
    if (!node.isText()) {
        node.requireObject(stepNames(true));
        if (node.keys().size() != 1)
            node.fail(u"нужен ровно один ключ: %1"_s.arg(stepNames(true).join(u", "_s)));
    }
    const QString name = node.isText() ? node.choice(stepNames(false)) : node.keys().constFirst();
    Step step;
    for (const StepKind &kind : stepKinds()) {
        if (kind.name != name)
            continue;
        step.kind = kind.kind;
        if (kind.readValue)
            kind.readValue(node.at(name), step);
    }
    return step;
}

Answers readAnswers(const JsonNode &node)
{
    node.requireObject({u"dialogs"_s, u"codes"_s});
    Answers answers;
    if (node.has(u"dialogs"_s)) {
        for (const JsonNode &answer : node.at(u"dialogs"_s).items())
            answers.dialogs.append(answer.choice({u"retry"_s, u"remove"_s}) == u"retry"_s);
    }
    if (node.has(u"codes"_s)) {
        for (const JsonNode &code : node.at(u"codes"_s).items())
            answers.codes.append(code.text());
    }
    return answers;
}

Expectation readExpectation(const JsonNode &node)
{
    static const QStringList amounts{u"sum"_s, u"discount"_s, u"total"_s, u"balance"_s, u"spent"_s, u"earned"_s};
    static const QStringList texts{u"card"_s, u"customer"_s, u"tier"_s};
    node.requireObject(QStringList{u"outcome"_s} + amounts + texts + QStringList{u"queued"_s, u"messages"_s});
    Expectation expectation;
    for (const QString &key : node.keys()) {
        if (amounts.contains(key))
            expectation.fields.insert(key, node.at(key).amount().toText());
        else if (texts.contains(key))
            expectation.fields.insert(key, node.at(key).anyText());
    }
    if (node.has(u"outcome"_s)) {
        const QString outcome = node.at(u"outcome"_s).choice({u"open"_s, u"closed"_s, u"voided"_s});
        expectation.fields.insert(u"outcome"_s, outcome);
    }
    if (node.has(u"queued"_s))
        expectation.queued = node.at(u"queued"_s).wholeNumber(0, highestLine);
    if (node.has(u"messages"_s)) {
        expectation.messages.emplace();
        for (const JsonNode &message : node.at(u"messages"_s).items())
            expectation.messages->append(message.text());
    }
    return expectation;
}

void refuseStepsAfterEnd(const JsonNode &steps, const ScenarioCheck &check)
{
    for (qsizetype index = 0; index + 1 < check.steps.size(); ++index) {
        const Step::Kind kind = check.steps.at(index).kind;
        if (kind == Step::Kind::Close || kind == Step::Kind::Void)
            steps.items().at(index + 1).fail(u"чек уже закрыт или аннулирован предыдущим шагом"_s);
    }
}

ScenarioCheck readCheck(const JsonNode &node)
{
    node.requireObject({u"title"_s, u"continue"_s, u"goods"_s, u"steps"_s, u"answers"_s, u"expect"_s});
    ScenarioCheck check;
    check.place = node.place();
    if (node.has(u"title"_s))
        check.title = node.at(u"title"_s).text();
    if (node.has(u"continue"_s))
        check.continued = node.at(u"continue"_s).flag();
    if (node.has(u"goods"_s)) {
        for (const JsonNode &goods : node.at(u"goods"_s).items())
            check.goods.append(readGoods(goods));
    }
    const JsonNode steps = node.at(u"steps"_s);
    for (const JsonNode &step : steps.items())
        check.steps.append(readStep(step));
    refuseStepsAfterEnd(steps, check);
    if (node.has(u"answers"_s))
        check.answers = readAnswers(node.at(u"answers"_s));
    if (node.has(u"expect"_s))
        check.expectation = readExpectation(node.at(u"expect"_s));
    return check;
}

} // namespace

Scenario readScenario(const QString &fileName)
{
    const JsonNode root = JsonNode::readFile(fileName);
    root.requireObject({u"$schema"_s, u"title"_s, u"checks"_s});
    Scenario scenario;
    if (root.has(u"title"_s))
        scenario.title = root.at(u"title"_s).text();
    for (const JsonNode &check : root.at(u"checks"_s).items())
        scenario.checks.append(readCheck(check));
    return scenario;
}

} // namespace till
