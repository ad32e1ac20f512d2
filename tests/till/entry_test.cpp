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
    ASSERT_EQ(catalogue.goods().size(), 30);
    // What is entered, the quantity (0: refused), and the names that are found.
    const std::tuple<const char *, double, QStringList> cases[]{
        {" 4600000000011 ", 1, {u"Молоко 2,5% 1 л"_s}},
        {"1.25 * 4600000000097", 1.25, {u"Яблоки сезонные, кг"_s}},
        {"0,345*сыр", 0.345, {u"Сыр Российский весовой, кг"_s}},
        {"черный ЧАЙ", 1, {u"Чай чёрный листовой по акции 100 г"_s}},
        {"4600000099999", 1, {}},
        {"0*4600000000011", 0, {}},
        {"1.2345*4600000000011", 0, {}},
        {"два*4600000000011", 0, {}},
        {"3*", 0, {}},
        {"", 0, {}},
    };
    for (const auto &[entry, quantity, names] : cases) {
        if (quantity == 0) {
            EXPECT_THROW(catalogue.find(QString::fromUtf8(entry)), BasicException) << entry;
            continue;
        }
        QStringList found;
        for (const till::Goods &goods : catalogue.find(QString::fromUtf8(entry))) {
            found.append(goods.name);
            EXPECT_EQ(goods.quantity, quantity) << entry;
        }
        EXPECT_EQ(found, names) << entry;
    }
    EXPECT_EQ(catalogue.find(u"масло"_s).size(), 2);
}

TEST(TypedStep, IsAWordOfTheScenariosOrGoods)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    const struct
    {
        const char *line;
        std::optional<Kind> kind; ///< Nothing: refused.
        std::function<bool(const till::Step &)> holds = [](const till::Step &) { return true; };
    } cases[]{
        {"3*4600000000011", Kind::Add, [](const auto &s) { return s.goods.quantity == 3 && s.goods.name.size() > 3; }},
        {"phone +7 900 123-45-67", Kind::Phone, [](const auto &s) { return s.number == "+7 900 123-45-67"_L1; }},
        {" change  2 quantity 0,5 ", Kind::Change, [](const auto &s) { return s.line == 2 && s.quantity == 0.5; }},
        {"change 2 price 45.50 quantity 3", Kind::Change,
         [](const auto &s) { return s.price == Money::fromKopecks(4550) && s.quantity == 3; }},
        {"remove 12", Kind::Remove, [](const auto &s) { return s.line == 12; }},
        {"take 2", Kind::Take, [](const auto &s) { return s.number == "2"_L1; }},
        {"nocard", Kind::RemoveCard},
        {"close", Kind::Close},
        {"close 1", {}},
        {"card", {}},
        {"change 2", {}},
        {"change 2 quantity five", {}},
        {"change 2 quantity 0.0004", {}},
        {"change 2 price nan", {}},
        {"change 2 colour 5", {}},
        {"масло", {}}, // two articles
        {"нет такого", {}},
    };
    for (const auto &[line, kind, holds] : cases) {
        SCOPED_TRACE(line);
        const auto read = [&catalogue, line = line] { return till::readTypedStep(QString::fromUtf8(line), catalogue); };
        if (!kind) {
            EXPECT_THROW(read(), BasicException);
            continue;
        }
        EXPECT_EQ(read().kind, *kind);
        EXPECT_TRUE(holds(read()));
    }
}

} // namespace
