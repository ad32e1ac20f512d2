// The host's exceptions. Their text is for the cashier; technical reasons go to the log.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

#include <QtCore/QByteArray>

#include <exception>

/// A failure to show to the cashier.
class POSHOST_EXPORT BasicException : public std::exception
{
public:
    explicit BasicException(const tr::Tr &text);
    explicit BasicException(const QString &text) : BasicException(tr::Tr(text)) {}
    ~BasicException() override;

    const tr::Tr &text() const { return m_text; }

    /// The Russian text in UTF-8.
    const char *what() const noexcept override { return m_what.constData(); }

private:
    tr::Tr m_text;
    QByteArray m_what;
};
