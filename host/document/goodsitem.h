// A line of a check.
#pragma once

#include <core/money.h>
#include <document/tmc.h>
#include <poshost_export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QVariant>

class POSHOST_EXPORT GoodsItem
{
public:
    GoodsItem();
    virtual ~GoodsItem();

    /// The line's number on the check, from 1; removing other lines does not change it. 0 while it is on no check.
    virtual int getPosnum() const { return m_posnum; }
    void setPosnum(int posnum) { m_posnum = posnum; }

    /// The article; never null.
    virtual QSharedPointer<Tmc> getTmc() const { return m_tmc; }
    void setTmc(const QSharedPointer<Tmc> &tmc) { m_tmc = tmc; }

    /// The barcode under which loyalty systems know the article; may be empty.
    virtual QString getAdditionalBarcode() const { return m_additionalBarcode; }
    void setAdditionalBarcode(const QString &barcode) { m_additionalBarcode = barcode; }

    /// In pieces or kilograms.
    double getQuantity() const { return m_quantity; }
    void setQuantity(double quantity) { m_quantity = quantity; }

    /// For one unit.
    Money getPrice() const { return m_price; }
    void setPrice(Money price) { m_price = price; }

    /// Price times quantity, to the kopeck, before discounts.
    Money getSum() const;

    /// All discounts on the line; kept by the check.
    Money getDiscountSum() const { return m_discountSum; }
    void setDiscountSum(Money sum) { m_discountSum = sum; }

    /// What the customer pays for the line.
    Money getTotal() const { return getSum() - getDiscountSum(); }

    /// How much of the line further discounts may still take, in rubles: all that is left of it, or, when
    /// `respectMinPrice` is set, what is left above the article's minimum price. Never below zero.
    virtual double getDiscountApplyLimit(bool respectMinPrice) const;

    virtual bool isAllowDiscount() const { return m_allowDiscount; }
    void setAllowDiscount(bool allow) { m_allowDiscount = allow; }

    virtual bool isAllowBonusEarn() const { return m_allowBonusEarn; }
    void setAllowBonusEarn(bool allow) { m_allowBonusEarn = allow; }

    /// Labels that campaigns have put on the line, such as "NOSPEND" and "NOBONUS".
    virtual QVariantList getCampaignLabels() const { return m_campaignLabels; }
    void setCampaignLabels(const QVariantList &labels) { m_campaignLabels = labels; }

    /// Whether a line may have this quantity (above 0, at most a million) and price (not negative), with a sum that
    /// Money can hold.
    static bool isSaleable(double quantity, Money price);

    /// The line without its discounts as plain variants, and back. A line read back has a Tmc of its own. fromMap()
    /// throws BasicException naming the field that is missing or wrong.
    QVariantMap toMap() const;
    static QSharedPointer<GoodsItem> fromMap(const QVariantMap &map);

    static constexpr auto storedFields()
    {
        return std::tuple{
            StoredField("posnum", &GoodsItem::m_posnum, [](const int &number) { return number > 0; }),
            StoredField("tmc", &GoodsItem::m_tmc, [](const QSharedPointer<Tmc> &tmc) { return !tmc.isNull(); }),
            StoredField("additionalBarcode", &GoodsItem::m_additionalBarcode),
            StoredField("quantity", &GoodsItem::m_quantity,
                        [](const double &quantity) { return isSaleable(quantity, Money()); }),
            StoredField("price", &GoodsItem::m_price, [](const Money &price) { return isSaleable(1, price); }),
            StoredField("allowDiscount", &GoodsItem::m_allowDiscount),
            StoredField("allowBonusEarn", &GoodsItem::m_allowBonusEarn),
            StoredField("campaignLabels", &GoodsItem::m_campaignLabels)};
    }

private:
    int m_posnum = 0;
    QSharedPointer<Tmc> m_tmc;
    QString m_additionalBarcode;
    double m_quantity = 1;
    Money m_price;
    Money m_discountSum;
    bool m_allowDiscount = true;
    bool m_allowBonusEarn = true;
    QVariantList m_campaignLabels;
};
