// What the cashier enters: goods, and in a terminal other steps, too.
#include "tests/support/golden.h"
#include "tests/support/json.h"
#include "tests/support/refusal.h"
#include "till/catalogue.h"
#include "till/typedstep.h"

namespace {

TEST(Catalogue, GivesGoodsWithAllThatTheServiceIsTold)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    EXPECT_EQ(QJsonObject::fromVariantMap(till::makeItem(catalogue.find(u"2*4600000000295"_s).first())->toMap()),
              json(R"({"additionalBarcode": "4600000000295", "allowBonusEarn": false, "allowDiscount": false,
                       "campaignLabels": ["NOSPEND", "NOBONUS"], "posnum": 0, "price": 21000, "quantity": 2,
                       "tmc": {"code": "4600000000295", "minPrice": 0, "name": "Сигареты, пачка", "priceSourceType": 1}})"));
    EXPECT_EQ(till::makeItem(catalogue.find(u"4600000000066"_s).first())->getTmc()->getPriceSourceType(),
              EPriceSourceType::Promotion);
}

TEST(TypedStep, IsAWordOfTheScenariosOrGoods)
{
    const till::Catalogue catalogue(QStringLiteral(KVO_GOODS));
    // In the order of Step::Kind.
    const QStringList kinds =
        u"add change remove restore card phone nocard price subtotal spend hold park take close void"_s.split(u' ');
    expectCases(u"till/typed.txt"_s, [&](const QByteArray &line) {
        QString read;
        const QString refusal = refusalOf([&] {
            const till::Step step = till::readTypedStep(QString::fromUtf8(line), catalogue);
            read = u"%1 \"%2\", line %3 quantity %4 price %5; \"%6\" x %7"_s.arg(
                kinds.value(static_cast<int>(step.kind)), step.number, QString::number(step.line),
                QString::number(step.quantity.value_or(0)), step.price.value_or(Money()).toText(), step.goods.name,
                QString::number(step.goods.quantity));
        });
        return refusal + read;
    });
}

} // namespace
