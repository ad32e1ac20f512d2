// The least that a client does beside the exchange itself: build each body and its text, and parse each answer.
#pragma once

#include "barecurl.h"
#include "samples.h"

namespace bench {

/// A recorded exchange whose body is built anew for each sending.
class Floor
{
public:
    /// Throws std::runtime_error when the body that is built differs from the recorded one.
    explicit Floor(const Exchange &exchange);

    const Exchange &build();
    QJsonObject body() const;

    static QJsonObject parse(const QByteArray &answer);

private:
    Exchange m_exchange;
    QJsonObject m_fields;
    OrderTexts m_order;
};

} // namespace bench
