// What the cashier enters: goods, and in a terminal other steps, too.
#include "tests/support/test.h"
#include "till/catalogue.h"
#include "till/typedstep.h"

#include <core/basicexception.h>

namespace {

using Kind = till::Step::Kind;

TEST(Catalogue, FindsWhatIsEntered)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    // What is entered, the quantity, and the names that are found.
    const std::tuple<const char *, double, QStringList> cases[]{
        {" 4600000000011 ", 1, {u"Молоко 2,5% 1 л"_s}},
        {"1.25 * 4600000000097", 1.25, {u"Яблоки сезонные, кг"_s}},
        {"0,345*сыр", 0.345, {u"Сыр Российский весовой, кг"_s}},
        {"черный ЧАЙ", 1, {u"Чай чёрный листовой по акции 100 г"_s}},
        {"4600000099999", 1, {}},
    };
    for (const auto &[entry, quantity, names] : cases) {
        QStringList found;
        for (const till::Goods &goods : catalogue.find(QString::fromUtf8(entry))) {
            found.append(goods.name);
            EXPECT_EQ(goods.quantity, quantity) << entry;
        }
        EXPECT_EQ(found, names) << entry;
    }
    for (const char *entry : {"0*4600000000011", "1.2345*4600000000011", "два*4600000000011", "3*", ""})
        EXPECT_THROW(catalogue.find(QString::fromUtf8(entry)), BasicException) << entry;
    EXPECT_EQ(catalogue.find(u"масло"_s).size(), 2);
}

TEST(TypedStep, IsAWordOfTheScenariosOrGoods)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    const auto read = [&](const char *line) { return till::readTypedStep(QString::fromUtf8(line), catalogue); };
    const struct
    {
        const char *line;
        Kind kind;
        std::function<bool(const till::Step &)> holds = [](const till::Step &) { return true; };
    } cases[]{
        {"3*4600000000011", Kind::Add, [](const auto &s) { return s.goods.quantity == 3 && s.goods.name.size() > 3; }},
        {"phone +7 900 123-45-67", Kind::Phone, [](const auto &s) { return s.number == "+7 900 123-45-67"_L1; }},
        {" change  2 quantity 0,5 ", Kind::Change, [](const auto &s) { return s.line == 2 && s.quantity == 0.5; }},
        {"change 2 price 45.50 quantity 3", Kind::Change,
         [](const auto &s) { return s.price == Money::fromKopecks(4550) && s.quantity == 3; }},
        {"remove 12", Kind::Remove, [](const auto &s) { return s.line == 12; }},
        {"take 2", Kind::Take, [](const auto &s) { return s.number == "2"_L1; }},
        {"card 7", Kind::Card, [](const auto &s) { return s.number == "7"_L1; }},
        {"nocard", Kind::RemoveCard},
        {"spend", Kind::Spend},
        {"void", Kind::Void},
    };
    for (const auto &[line, kind, holds] : cases) {
        EXPECT_EQ(read(line).kind, kind) << line;
        EXPECT_TRUE(holds(read(line))) << line;
    }
    for (const char *line : {"close 1", "card", "change 2", "change 2 quantity five", "change 2 quantity 0.0004",
                             "change 2 price nan", "change 2 colour 5", "масло", "нет такого"})
        EXPECT_THROW(read(line), BasicException) << line;
}

} // namespace
