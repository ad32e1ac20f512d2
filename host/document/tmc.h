// An article of the catalogue.
#pragma once

#include <core/money.h>
#include <document/epricesourcetype.h>
#include <document/storedfield.h>
#include <poshost_export.h>

#include <QtCore/QString>

class POSHOST_EXPORT Tmc
{
public:
    virtual ~Tmc();

    QString getCode() const { return m_code; }
    void setCode(const QString &code) { m_code = code; }

    QString getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    /// The price below which no ordinary discount may take one unit.
    Money getMinPrice() const { return m_minPrice; }
    void setMinPrice(Money price) { m_minPrice = price; }

    virtual EPriceSourceType getPriceSourceType() const { return m_priceSourceType; }
    void setPriceSourceType(EPriceSourceType type) { m_priceSourceType = type; }

    static constexpr auto storedFields()
    {
        return std::tuple{
            StoredField("code", &Tmc::m_code), StoredField("name", &Tmc::m_name),
            StoredField("minPrice", &Tmc::m_minPrice, [](const Money &price) { return price >= Money(); }),
            StoredField("priceSourceType", &Tmc::m_priceSourceType)};
    }

private:
    QString m_code;
    QString m_name;
    Money m_minPrice;
    EPriceSourceType m_priceSourceType = EPriceSourceType::Catalogue;
};
