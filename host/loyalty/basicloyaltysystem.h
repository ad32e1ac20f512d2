// A loyalty system as the host drives it, and the behaviour that all of them share.
#pragma once

#include <core/formock.h>
#include <core/tr.h>
#include <document/documentbonusrecord.h>
#include <loyalty/basicplugin.h>
#include <loyalty/cardnumber.h>
#include <loyalty/documentwatcher.h>
#include <loyalty/ecoupon.h>
#include <loyalty/loyaltysystemoption.h>
#include <poshost_export.h>

class LoyaltySystems;

/// The base of loyalty plugins. Operations that a plugin does not override work on the state below: points, impacts and
/// records of the current check. Used on the check thread only.
class POSHOST_EXPORT BasicLoyaltySystem : public DocumentWatcher, public virtual BasicPlugin
{
public:
    BasicLoyaltySystem();
    explicit BasicLoyaltySystem(utils::ForMock);
    /// Deregisters a system that is still registered.
    ~BasicLoyaltySystem() override;

    /// The number under which the host knows the system; card records carry it.
    int getLoyaltySystemCode() const { return loyaltySystemCode; }

    /// Registers the system with the host, so that its cards can be found. False when it is registered already.
    bool init() override;
    /// Removes the system from the host's registry.
    bool deinit() override;

    // The life of a check, for plugins to override.

    /// Finds the card for what the cashier entered. Default: a number that was typed or scanned is the card's number;
    /// other kinds of input are refused.
    virtual loyalty::CardNumberResult getCardNumber(const loyalty::CardNumberInputData &data);

    /// Fills the record with what is known of the card. False: not identified, see getLastErrorString(). Default: any
    /// card with a number is identified by it.
    virtual bool identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType type);

    /// Prices the check. False: not priced, see getLastErrorString(). Default: recalculateAllPoints().
    virtual bool request(const QSharedPointer<AbstractDocument> &document);

    /// Pays with points; getBonusImpactsForSpend() then gives the discounts. Default: one discount on the check, of all
    /// the points for spending that lines can still take, down to the step of getRoundPrecisionForSpend().
    virtual bool spendPoints();

    /// The check is closed. Default: nothing to do.
    virtual bool commit(const QSharedPointer<AbstractDocument> &document);

    /// Drops points, impacts and records.
    virtual bool cancel();

    /// The check is voided, or the card is about to be taken off it. Default: nothing to do.
    virtual bool rollback(const QSharedPointer<AbstractDocument> &document);

    /// Reads the state back from the plugin data of the current check. Default: "pointsForSpend" and "pointsForEarn".
    virtual bool restoreLoyaltySystem();

    // What the host may ask of any loyalty system.

    /// Whether the check may be closed; `offline` tells that the service cannot be reached. Default: always.
    virtual bool requestCommit(bool offline);
    /// Recomputes the points for earning from the bonus records.
    virtual bool recalculatePointsForEarn();
    /// The points that the line with this position earns (0: the whole check); a `qualifier` that is not empty is the
    /// number of the card that they are for.
    virtual double calculatePointsForEarnByQualifier(const QString &qualifier, int position);
    /// Drops all points for earning; `valutCode` is the payment that excludes them. Returns whether there were any.
    virtual bool removeEarnByValutCode(int valutCode);
    /// Drops what was to be earned after closing. Returns whether there was any.
    virtual bool removeEarnAfterClose();
    /// Recomputes the points for spending and for earning.
    virtual bool recalculateAllPoints(const QSharedPointer<AbstractDocument> &document);
    virtual bool hasPointsForSpend() const;
    /// Points that may be spent on the check; never more than it still costs, and none without a check.
    virtual double getPointsForSpend(const QSharedPointer<AbstractDocument> &document) const;
    virtual bool hasPointsForEarn() const;
    virtual double getPointsForEarn() const;
    virtual bool hasBonusImpacts() const;
    /// The discounts that the system gives apart from points. Default: none.
    virtual QList<QSharedPointer<DocumentImpact>> getDiscountImpacts() const;
    /// The points that spendPoints() has spent, as discounts for the host to put on the check.
    virtual BonusImpactPtrList getBonusImpactsForSpend() const;
    virtual QList<DocumentBonusRecord> getBonusRecords() const;
    virtual QList<tr::Tr> getMessagesToCashier() const;
    virtual QList<tr::Tr> getMessagesToClient() const;
    virtual QList<tr::Tr> getMessagesToClientDisplay() const;
    virtual tr::Tr getLastErrorString() const;
    virtual void clearLastErrorString();
    /// Whether the system takes points for another customer than the card's holder. Default: no.
    virtual bool takeForCustomer() const;
    /// Lines about the card for the cashier: number, customer, status and balance, as far as they are known.
    virtual QStringList getCardInfo(const QSharedPointer<DocumentCardRecord> &card) const;
    /// Whether the customer may spend fewer points than are offered. Default: when the host asks for the number.
    virtual bool isAllowPartialPointsSpend() const;
    /// Negative points count as none.
    virtual void setPointsForSpend(double points);
    /// The smallest step of points that can be spent; 0.01 unless set.
    virtual double getRoundPrecisionForSpend() const;
    /// A step that is not above zero changes nothing.
    virtual void setRoundPrecisionForSpend(double precision);
    /// Whether the host's own discounts may be given together with this system's. Default: yes.
    virtual bool isAllowInternalDiscount() const;
    /// Whether change may be turned into a discount on a check that points have paid a part of. Default: no.
    virtual bool useDiscOnChangeWithBonusPayment() const;
    /// Copies the card holder's name to the messages for the cashier. False when the holder is unknown.
    virtual bool fillCardOwnerInfo();
    /// How the card may be entered: a sum of bits 1 << ECardNumberType. Default: all of them.
    virtual int getCardMode() const;
    /// Texts to print after the receipt. Default: none.
    virtual QStringList getSlips() const;
    /// Whether a card on the check may be replaced by another. Default: no.
    virtual bool cardReplace();
    /// What the host asks for when a card is added in the subtotal. Default: the card's number.
    virtual ECardNumberType getCardNumberTypeToAddCardInSubtotal() const;
    /// Whether the option is on. Default: SpendPoints, EarnPoints and RequestPointsForSpend are; RequestAfterClose is
    /// not, because it costs another exchange.
    virtual bool checkOption(LoyaltySystemOption option) const;
    /// Whether the system itself has asked how many points to spend, so the host need not. Default: no.
    virtual bool requestInputPointsForSpendByLoyalty();
    /// The closed check is reported to the system. Default: nothing to do.
    virtual bool registerCheck();
    /// Whether the system answers for coupons of this kind. Default: for none.
    virtual bool couponBelongsToSystem(ECoupon::Type type) const;
    /// Forgets the closed check: its points, impacts, records, messages and last error, and the check itself. What is
    /// stored with the check stays.
    virtual void clearAfterClose();
    /// The check has been paid. False holds it open. Default: nothing to do.
    virtual bool payCheck();
    /// Limits the points for spending to what the check still costs; without a check they stay.
    virtual bool recalculatePointsForSpend(const QSharedPointer<AbstractDocument> &document);
    /// The check is about to be set aside, has been set aside, or has been taken up again. Default: nothing to do.
    virtual bool beforePutoutCheck();
    virtual bool afterPutoutCheck();
    virtual bool revealCheck();
    /// Spreads a record over the lines that allow earning, in proportion to what the customer pays for them; the parts
    /// add up to the record's amount to a hundredth of a point. A null document, or one on which no line earns, gives
    /// the record itself for the whole check. Throws BasicException when the amount is not Money::isSum().
    virtual QList<DocumentBonusRecord> distributeBonusRecord(const QSharedPointer<AbstractDocument> &document,
                                                             const DocumentBonusRecord &record) const;
    /// How much of each line points may still pay, in rubles by position: 0 for a line that allows no discounts.
    virtual QHash<int, double> getBonusImpactsLimits(const QSharedPointer<AbstractDocument> &document) const;
    /// This system's card on the current check; null when there is none.
    virtual QSharedPointer<DocumentCardRecord> getCard() const;
    virtual bool hasCard() const;
    /// False when the system is registered already.
    virtual bool registerLoyaltySystem();
    /// False when the system is not registered.
    virtual bool deregisterLoyaltySystem();
    virtual void setOption(LoyaltySystemOption option, bool enabled);
    /// The name under which the system's plugin data is stored with a check.
    virtual QString getStoreDataKey() const;
    /// Stores values with the current check; without a check there is nothing to store with.
    virtual void setPluginData(const QString &key, const QVariant &value) const;
    virtual void setPluginData(const QVariantMap &data) const;
    virtual QVariant getPluginData(const QString &key, const QVariant &defaultValue) const;
    virtual QVariantMap getPluginData() const;
    /// Forgets everything about the check, the system's plugin data included.
    virtual void clearData();
    /// Forgets points, impacts and records through cancel(), and the messages.
    virtual void clearLoyaltyData();

protected:
    int loyaltySystemCode = 0;
    double pointsForSpend = 0;
    double pointsForEarn = 0;
    BonusImpactPtrList bonusImpacts;
    QList<DocumentBonusRecord> bonusRecords;
    tr::Tr lastError;
    QList<tr::Tr> messagesToCashier;

private:
    QSharedPointer<LoyaltySystems> m_registry; ///< Where the system is registered; null while it is not.
    QSet<int> m_options;
    double m_roundPrecisionForSpend = 0.01;
};

Q_DECLARE_INTERFACE(BasicLoyaltySystem, "LoyaltySystem")
