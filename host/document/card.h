// A card and the customer who holds it.
#pragma once

#include <document/client.h>
#include <document/storedfield.h>
#include <poshost_export.h>

#include <QtCore/QSharedPointer>

class POSHOST_EXPORT Card
{
public:
    /// Null until the customer is known.
    QSharedPointer<Client> getClient() const { return m_client; }
    void setClient(const QSharedPointer<Client> &client) { m_client = client; }

    static constexpr auto storedFields() { return std::tuple{StoredField("client", &Card::m_client)}; }

private:
    QSharedPointer<Client> m_client;
};
