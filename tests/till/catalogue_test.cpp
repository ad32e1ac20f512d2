// The catalogue: which goods are meant by what is entered.
#include "till/catalogue.h"

#include <core/basicexception.h>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

TEST(Catalogue, FindsWhatIsEntered)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    ASSERT_EQ(catalogue.goods().size(), 30);
    const struct
    {
        const char *entry;
        double quantity; ///< 0: refused.
        QStringList names;
    } cases[]{
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

} // namespace
