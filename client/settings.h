// The plugin's settings: the section [Kvo] of the host's configuration. The plugin does not validate them; a host that
// wants to refuse wrong values before selling checks them against this list.
#pragma once

#include <QtCore/QStringView>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace kvo {

struct Setting
{
    enum class Kind { Text, Whole, Decimal, Address, Path };

    QStringView key;
    Kind kind = Kind::Text;
    QStringView defaultValue = {};
    QStringView meaning;
    QStringView example = {};
    double lowest = std::numeric_limits<double>::lowest();
    double highest = std::numeric_limits<double>::max();
    QStringView placeholder = {}; ///< The text has to contain this.
};

inline constexpr std::array settings{
    Setting{.key = u"Kvo:host",
            .kind = Setting::Kind::Address,
            .defaultValue = u"http://localhost",
            .meaning =
                u"Scheme, host and port of the loyalty service; a path in it is ignored. https is verified against the "
                u"system's certificates (an authority of your own: `update-ca-certificates`); proxies that the "
                u"environment names are not used.",
            .example = u"https://loyalty.example.com"},
    Setting{.key = u"Kvo:path",
            .kind = Setting::Kind::Path,
            .defaultValue = u"/api/ax/xpp/v1",
            .meaning = u"Path of the loyalty API.",
            .example = u"/loyalty/v1"},
    Setting{.key = u"Kvo:verificationPath",
            .kind = Setting::Kind::Path,
            .defaultValue = u"/api/twofa/msg/v1",
            .meaning = u"Path of the message API.",
            .example = u"/messages/v1"},
    Setting{.key = u"Kvo:user", .meaning = u"User name at the service (HTTP Basic).", .example = u"shop-17"},
    Setting{.key = u"Kvo:password", .meaning = u"Password at the service.", .example = u"secret"},
    Setting{.key = u"Kvo:timeout",
            .kind = Setting::Kind::Whole,
            .defaultValue = u"10000",
            .meaning =
                u"Longest time for one exchange, in milliseconds. Identifying a customer takes up to three exchanges.",
            .example = u"5000",
            .lowest = 1,
            .highest = 600'000},
    Setting{.key = u"Kvo:brand",
            .meaning = u"The loyalty programme's brand, sent with queries, orders and messages.",
            .example = u"ACME"},
    Setting{.key = u"Kvo:verificationBrand",
            .meaning = u"Recognised but not used: messages go out under `Kvo:brand`. Default: the brand.",
            .example = u"ACME"},
    Setting{.key = u"Kvo:onlineStore", .meaning = u"The store, sent with orders.", .example = u"S-017"},
    Setting{.key = u"Kvo:terminal", .meaning = u"The till, sent with orders.", .example = u"POS-3"},
    Setting{.key = u"Kvo:verificationLimit",
            .kind = Setting::Kind::Decimal,
            .defaultValue = u"-1",
            .meaning = u"Spending this many points or more needs a code from a text message. Negative: never.",
            .example = u"500"},
    Setting{.key = u"Kvo:verificationCodeLength",
            .kind = Setting::Kind::Whole,
            .defaultValue = u"4",
            .meaning = u"Digits of the code. 0: no code.",
            .example = u"6",
            .lowest = 0,
            .highest = 12},
    Setting{.key = u"Kvo:verificationMessage",
            .defaultValue = u"Ваш код подтверждения: %1",
            .meaning = u"The text message; `%1` is replaced by the code.",
            .example = u"Код списания баллов: %1",
            .placeholder = u"%1"},
};

/// The setting with this key. A key that is not in the list does not compile.
consteval const Setting &setting(std::u16string_view key)
{
    return *std::ranges::find_if(settings, [key](const Setting &one) {
        return std::u16string_view(one.key.utf16(), static_cast<std::size_t>(one.key.size())) == key;
    });
}

} // namespace kvo
