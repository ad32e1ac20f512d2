// An HTTP service on loopback, with TLS or without, that answers what a test's handler puts into the response.
#pragma once

#include "certificate.h"

#include <httplib.h>

#include <QtCore/QByteArray>

#include <memory>
#include <thread>

class Service
{
public:
    explicit Service(const httplib::Server::Handler &handler, const Certificate *certificate = nullptr)
        : m_server(certificate ? std::make_unique<httplib::SSLServer>(certificate->x509(), certificate->key())
                               : std::make_unique<httplib::Server>())
    {
        m_server->Get(".*", handler);
        m_server->Post(".*", handler);
        m_server->set_keep_alive_max_count(100);
        m_server->set_keep_alive_timeout(1); // its end waits for idle connections
        m_server->set_tcp_nodelay(true);
        m_port = m_server->bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server->listen_after_bind(); });
        while (!m_server->is_running())
            std::this_thread::yield(); // before that it cannot be stopped
    }
    ~Service()
    {
        m_server->stop();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Service)

    /// "127.0.0.1:PORT", or with another name of this machine.
    QByteArray address(const QByteArray &host = "127.0.0.1") const { return host + ':' + QByteArray::number(m_port); }

private:
    std::unique_ptr<httplib::Server> m_server;
    std::thread m_thread;
    int m_port = 0;
};
