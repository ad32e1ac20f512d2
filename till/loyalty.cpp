// Loads the plugin if it can be used.
#include "loyalty.h"

#include "loyaltyplugin.h"

#include <core/basicexception.h>
#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Its code 0 belongs to no loyalty system: it answers for no card on any check.
class NoLoyalty : public BasicLoyaltySystem
{
public:
    explicit NoLoyalty(const tr::Tr &reason) { lastError = reason; }

    loyalty::CardNumberResult getCardNumber(const loyalty::CardNumberInputData &) override
    {
        return {false, {}, lastError};
    }
    bool identifyByCard(QSharedPointer<DocumentCardRecord> &, ECardNumberType) override { return false; }
    void clearLastErrorString() override {}
    void clearAfterClose() override { setDocument(nullptr); }
};

} // namespace

tr::Tr refusalText(const tr::Tr &said)
{
    const QString text = plainText(said.ru(), said.ru().size());
    return text.isEmpty() ? tr::Tr(u"Сервис отказал и не назвал причины"_s) : tr::Tr(said.key(), text);
}

QString reasonFor(const tr::Tr &question, const BasicLoyaltySystem &system)
{
    return question.key().startsWith("till"_L1) ? QString() : refusalText(system.getLastErrorString()).ru();
}

Loyalty::Loyalty(const QString &pluginFolder)
{
    try {
        m_plugin = std::make_unique<LoyaltyPlugin>(pluginFolder);
        m_system = &m_plugin->system();
    } catch (const BasicException &error) {
        m_standIn = std::make_unique<NoLoyalty>(error.text());
        m_system = m_standIn.get();
    }
}

Loyalty::~Loyalty() = default;

} // namespace till
