// A sales check: lines, cards, discounts and sums.
#pragma once

#include <core/money.h>
#include <document/abstractdocument.h>
#include <poshost_export.h>

/// Used on the check thread only. Sums are whole kopecks; the discounts of the lines always add up to the check's
/// discount.
class POSHOST_EXPORT SaleDocument : public AbstractDocument
{
    Q_OBJECT

public:
    enum class State : int { Open = 0, Closed = 1, Voided = 2, Last = Voided };

    /// A new open check with a random identifier, opened now.
    explicit SaleDocument(EDocumentType type = EDocumentType::Sale);
    ~SaleDocument() override;

    QList<QSharedPointer<DocumentImpact>> getDiscountImpacts() const override { return m_impacts; }
    QList<QSharedPointer<GoodsItem>> getGoodsItems() const override { return m_goods; }
    QDateTime getDateTime() const override { return m_dateTime; }
    QString getIdentifier() const override { return m_identifier; }
    EDocumentType getType() const override { return m_type; }
    QList<QSharedPointer<DocumentCardRecord>> getCardRecords() const override { return m_cards; }
    void removeCard(const QSharedPointer<DocumentCardRecord> &card) override;

    State getState() const { return m_state; }
    void setState(State state) { m_state = state; }

    /// Appends a line, gives it the next position number and returns that. Throws BasicException unless
    /// GoodsItem::isSaleable().
    int addGoodsItem(const QSharedPointer<GoodsItem> &item);

    /// The line with this position number; null where there is none.
    QSharedPointer<GoodsItem> findGoodsItem(int posnum) const;

    /// The same, but throws BasicException where there is none.
    QSharedPointer<GoodsItem> requireGoodsItem(int posnum) const;

    /// Changes a line's quantity or price. Leaves impacts alone: the caller removes those that no longer fit first.
    /// Throws BasicException, with the check unchanged, when there is no such line, when it would not be
    /// GoodsItem::isSaleable(), or when its discounts would exceed its sum.
    void changeGoodsItem(int posnum, double quantity, Money price);

    /// Removes a line with its share of every impact, and impacts that have no other share. Throws BasicException when
    /// there is no such line.
    void removeGoodsItem(int posnum);

    /// Puts a removed line back in its place, with its number. Throws BasicException when the number is taken or was
    /// never assigned, or the line is not GoodsItem::isSaleable().
    void putBackGoodsItem(const QSharedPointer<GoodsItem> &item);

    /// Adds a card and gives the record its number within the check. Does nothing if it is on the check already.
    void addCard(const QSharedPointer<DocumentCardRecord> &card);

    /// Adds an impact, unless it is on the check already. Given shares are rounded to the nearest kopeck, and the
    /// totals become their sum; shares of points are rounded so that all points on the check together are their exact
    /// sum, rounded once. Without shares, an impact on a position takes its line, and one on the check is distributed
    /// over the lines that allow discounts, in proportion to what discounts may still take of them. Throws
    /// BasicException, with check and impact unchanged, when a share names no line, is negative or no number, or
    /// exceeds what discounts may still take of the line: nothing where it allows none, and only what is above the
    /// minimum price unless the share ignores that.
    void addImpact(const QSharedPointer<DocumentImpact> &impact);

    /// Removes the impacts that the card has given; none for a null card.
    void removeImpactsOf(const QSharedPointer<DocumentCardRecord> &card);

    /// The sum of the lines before discounts, the discounts, and what the customer pays.
    Money getSum() const;
    Money getDiscountSum() const;
    Money getTotal() const { return getSum() - getDiscountSum(); }

    /// The check itself; its lines, cards and impacts are stored by rows of their own.
    static constexpr auto storedFields()
    {
        using Sale = SaleDocument;
        return std::tuple{
            StoredField("type", &Sale::m_type),
            StoredField("state", &Sale::m_state),
            StoredField("identifier", &Sale::m_identifier, [](const QString &text) { return !text.isEmpty(); }),
            StoredField("dateTime", &Sale::m_dateTime, [](const QDateTime &time) { return time.isValid(); }),
            StoredField("lastRemovedPosnum", &Sale::m_lastRemovedPosnum, [](const int &number) { return number >= 0; }),
            StoredField("lastCardCode", &Sale::m_lastCardCode, [](const int &number) { return number >= 0; })};
    }

    /// The parts of a stored check other than its own fields. Links impacts to their cards and computes the lines'
    /// discounts. Throws BasicException when the parts contradict each other.
    void assemble(const QList<QSharedPointer<GoodsItem>> &goods, const QList<QSharedPointer<DocumentCardRecord>> &cards,
                  const QList<QSharedPointer<DocumentImpact>> &impacts);

private:
    int lastPosnum() const; ///< The highest number given so far.
    QList<Money> roundShares(const DocumentImpact &impact,
                             const QList<QSharedPointer<DocumentImpactDetail>> &shares) const;
    void requireFits(const QList<QSharedPointer<DocumentImpactDetail>> &shares, const QList<Money> &sums) const;
    void removeSharesOf(int posnum); ///< With impacts that have no other share.
    void requireConsistent() const;
    void updateDiscounts();
    void countDiscounts(const DocumentImpact &impact);

    EDocumentType m_type;
    State m_state = State::Open;
    QString m_identifier;
    QDateTime m_dateTime;
    int m_lastRemovedPosnum = 0; ///< Numbers are not given twice; those above it are the lines' own.
    int m_lastCardCode = 0;
    QList<QSharedPointer<GoodsItem>> m_goods;
    QList<QSharedPointer<DocumentCardRecord>> m_cards;
    QList<QSharedPointer<DocumentImpact>> m_impacts;
    double m_pointsGiven = 0; ///< By all impacts of points, exactly.
    Money m_pointsTaken;      ///< The same on the lines.
};
