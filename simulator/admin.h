// The addresses below /sim/, which show and change ledger, messages and faults.
#pragma once

#include "adminroutes.h"
#include "database.h"
#include "eventstream.h"
#include "faults.h"
#include "requestlog.h"

namespace sim {

class Admin
{
public:
    /// All must outlive the object.
    Admin(Database &database, const RequestLog &log, Faults &faults, Feed &feed);

    /// The object must outlive the server of the routes.
    void addRoutes(AdminRoutes &routes);

private:
    Json addCustomer(const Json &body);
    Json setBalance(const Json &body);

    Database &m_database;
    const RequestLog &m_log;
    Faults &m_faults;
    Feed &m_feed;
    EventStream m_events;
};

/// Serves the page at "/", with its style and its program.
void addPage(httplib::Server &server);

} // namespace sim
