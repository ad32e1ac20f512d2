// A document of the till as loyalty systems see it.
#pragma once

#include <document/bonusimpact.h>
#include <document/documentcardrecord.h>
#include <document/edocumenttype.h>
#include <document/goodsitem.h>
#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>

class POSHOST_EXPORT AbstractDocument : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The impacts on the document, in the order in which they were added.
    virtual QList<QSharedPointer<DocumentImpact>> getDiscountImpacts() const = 0;

    /// The lines, in the order of the receipt.
    virtual QList<QSharedPointer<GoodsItem>> getGoodsItems() const = 0;

    /// When the document was opened, in local time.
    virtual QDateTime getDateTime() const = 0;

    /// The document's identifier, unique across the retailer's tills.
    virtual QString getIdentifier() const = 0;

    virtual EDocumentType getType() const = 0;

    /// The cards on the document.
    virtual QList<QSharedPointer<DocumentCardRecord>> getCardRecords() const = 0;

    /// Removes a card and all of its impacts. Ignores unknown cards.
    virtual void removeCard(const QSharedPointer<DocumentCardRecord> &card) = 0;

    /// What the plugin `storeKey` has stored with the document; saved and restored together with it.
    QVariantMap getPluginData(const QString &storeKey) const { return m_pluginData.value(storeKey); }
    void setPluginData(const QString &storeKey, const QVariantMap &data) { m_pluginData.insert(storeKey, data); }
    void setPluginData(const QString &storeKey, const QString &key, const QVariant &value)
    {
        m_pluginData[storeKey].insert(key, value);
    }
    QStringList pluginDataKeys() const { return m_pluginData.keys(); }

private:
    QHash<QString, QVariantMap> m_pluginData;
};

Q_DECLARE_METATYPE(QSharedPointer<AbstractDocument>)
