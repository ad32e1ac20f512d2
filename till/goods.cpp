// Reads articles from the till's files and turns them into lines of a check.
#include "goods.h"

#include "jsonnode.h"

using namespace Qt::Literals::StringLiterals;

namespace till {

Goods readGoods(const JsonNode &node)
{
    node.requireObject({u"barcode"_s, u"name"_s, u"price"_s, u"quantity"_s, u"labels"_s, u"allowDiscount"_s,
                        u"allowBonusEarn"_s, u"onSale"_s});
    Goods goods;
    goods.barcode = node.at(u"barcode"_s).text();
    goods.name = node.at(u"name"_s).text();
    goods.price = node.at(u"price"_s).amount();
    if (node.has(u"quantity"_s))
        goods.quantity = node.at(u"quantity"_s).quantity();
    if (node.has(u"labels"_s)) {
        for (const JsonNode &label : node.at(u"labels"_s).items())
            goods.labels.append(label.text());
    }
    const auto readFlag = [&node](const QString &key, bool &flag) {
        if (node.has(key))
            flag = node.at(key).flag();
    };
    readFlag(u"allowDiscount"_s, goods.allowDiscount);
    readFlag(u"allowBonusEarn"_s, goods.allowBonusEarn);
    readFlag(u"onSale"_s, goods.onSale);
    return goods;
}

QSharedPointer<GoodsItem> makeItem(const Goods &goods)
{
    auto article = QSharedPointer<Tmc>::create();
    article->setCode(goods.barcode);
    article->setName(goods.name);
    article->setPriceSourceType(goods.onSale ? EPriceSourceType::Promotion : EPriceSourceType::Catalogue);
    auto item = QSharedPointer<GoodsItem>::create();
    item->setTmc(article);
    item->setAdditionalBarcode(goods.barcode);
    item->setQuantity(goods.quantity);
    item->setPrice(goods.price);
    item->setAllowDiscount(goods.allowDiscount);
    item->setAllowBonusEarn(goods.allowBonusEarn);
    item->setCampaignLabels(QVariantList(goods.labels.cbegin(), goods.labels.cend()));
    return item;
}

} // namespace till
