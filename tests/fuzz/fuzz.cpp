// Everything that reads what comes from outside. KVO_FUZZ names the operation that libFuzzer calls.
#include "client/interface.h"
#include "host/net/answer.h"
#include "metatypes/plaindata.h"
#include "simulator/customerfile.h"
#include "simulator/refusal.h"
#include "simulator/wire.h"
#include "till/catalogue.h"
#include "till/csvreader.h"
#include "till/scenarioreader.h"
#include "till/settingfault.h"
#include "till/typedstep.h"

#include <checks/checkrows.h>
#include <core/basicexception.h>
#include <core/plaintext.h>

#include <log4qt/logmanager.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string_view>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Ends the run, with the input kept, when what must always be true is not.
void require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

/// Bad input may be refused, by this exception and no other.
template <class Exception = BasicException>
void orRefuse(auto operation)
{
    try {
        operation();
    } catch (const Exception &) {
        return;
    }
}

/// The name of a file in memory with this content.
QString file(const QByteArray &content)
{
    static const int descriptor = ::memfd_create("input", MFD_CLOEXEC);
    require(::ftruncate(descriptor, 0) == 0);
    require(::pwrite(descriptor, content.constData(), static_cast<std::size_t>(content.size()), 0) == content.size());
    return u"/proc/self/fd/%1"_s.arg(descriptor);
}

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

void answer(const QByteArray &input)
{
    const Answer answer = readAnswer(input);
    require((answer.kind == Answer::Unreadable) != answer.fault.isEmpty());
    require((answer.kind == Answer::Json) != answer.json.isNull());
}

/// The first byte tells how the exchange ended, the others are the body.
void errorCheck(const QByteArray &input)
{
    static const kvo::Interface client{utils::ForMock()};
    constexpr std::array statuses{0, 200, 202, 400, 404, 429, 500, 503};
    const auto how = static_cast<uchar>(input.isEmpty() ? 0 : input[0]);
    const auto error = (how & 8) != 0 ? QNetworkReply::TimeoutError : QNetworkReply::NoError;
    const QJsonObject body = object(input.mid(1));
    const http::Response response(statuses[how % statuses.size()], error, tr::Tr(u"?"_s), QJsonDocument(body));
    bool accepted = false;
    orRefuse([&] {
        client.checkForError(response, (how & 16) != 0);
        accepted = true;
    });
    require(!accepted || error == QNetworkReply::NoError || (how & 16) != 0);
    const kvo::Response result(body.value("result"_L1).toObject());
    require(!std::isnan(result.redeemPointsAmount()) && std::isfinite(result.earnPoints()));
}

void pluginData(const QByteArray &input)
{
    const QVariantMap stored = object(input).toVariantMap();
    const QVariantList impacts = kvo::toPlainList(kvo::bonusImpactsFrom(stored.value(u"bonusImpacts"_s).toList()));
    require(kvo::toPlainList(kvo::bonusImpactsFrom(impacts)) == impacts);
    QStringList unreadable;
    const QVariantMap record = kvo::toPlainMap(kvo::bonusRecordFrom(stored, unreadable));
    require(kvo::toPlainMap(kvo::bonusRecordFrom(record, unreadable = {})) == record && unreadable.isEmpty());
}

void event(const QByteArray &input)
{
    const QJsonObject stored = kvo::Request::fromQueueEvent(object(input)).toQueueEvent();
    require(kvo::Request::fromQueueEvent(stored).toQueueEvent() == stored);
}

/// A row a line: kind, key and content, separated by tabs.
void check(const QByteArray &input)
{
    QList<CheckRow> rows;
    for (const QByteArray &line : input.split('\n')) {
        const QByteArrayList parts = line.split('\t');
        if (parts.size() == 3)
            rows.append({QString::fromUtf8(parts[0]), QString::fromUtf8(parts[1]), parts[2]});
    }
    QSharedPointer<SaleDocument> check;
    orRefuse([&] { check = CheckRows().read(rows); });
    if (!check)
        return;
    const auto written = CheckRows().update(*check).written; // what was accepted can be written, and read again
    require(CheckRows().update(*CheckRows().read(written)).written.size() == written.size());
}

void plainTexts(const QByteArray &input)
{
    constexpr qsizetype length = 40;
    const auto *units = reinterpret_cast<const char16_t *>(input.constData());
    const QString plain = plainText(QString::fromUtf16(units, input.size() / 2), length);
    require(plain.size() <= length && plainText(plain, length) == plain);
    require(plainText(QString::fromUtf8(input), length).size() <= length);
}

void csv(const QByteArray &input)
{
    int line = 0;
    for (const till::CsvRecord &record : till::readCsv(input)) {
        require(record.line > line && record.fields.isEmpty() != record.fault.isEmpty());
        line = record.line;
    }
}

void catalogue(const QByteArray &input)
{
    orRefuse([&input] {
        const till::Catalogue catalogue(file(input));
        for (const till::Goods &goods : catalogue.goods())
            require(catalogue.findByBarcode(goods.barcode) == &goods);
    });
}

void typedLine(const QByteArray &input)
{
    static const till::Catalogue catalogue(QStringLiteral(KVO_SOURCES "/till/goods.json"));
    const QString line = QString::fromUtf8(input).section(u'\n', 0, 0);
    if (!line.isEmpty())
        orRefuse([&line] { till::readTypedStep(line, catalogue); });
}

/// A body at the simulator, read as each of the requests that it may be.
void wire(const QByteArray &input)
{
    const auto attempt = [&input](auto read) {
        orRefuse<sim::Refusal>([&] { read(sim::parseObject(input.toStdString())); });
    };
    attempt(sim::readOrder);
    attempt(sim::readBinding);
    attempt(sim::readCancellation);
    attempt(sim::readMessage);
    attempt([](const sim::Json &body) {
        const sim::Customer customer = sim::readCustomer(body, "");
        require(customer.balance >= 0 && !customer.cards.empty());
    });
}

const std::map<std::string_view, void (*)(const QByteArray &)> operations{
    {"answer", answer},
    {"catalogue", catalogue},
    {"check", check},
    {"configuration",
     [](const QByteArray &input) { orRefuse([&] { till::settingFaults(Config(file(input)), hostSettings()); }); }},
    {"csv", csv},
    {"error-check", errorCheck},
    {"event", event},
    {"plaintext", plainTexts},
    {"plugin-data", pluginData},
    {"scenario", [](const QByteArray &input) { orRefuse([&] { till::readScenario(file(input)); }); }},
    {"typed-line", typedLine},
    {"wire", wire},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const auto operation = [] {
        Log4Qt::LogManager::rootLogger()->setLevel(Log4Qt::Level::OFF_INT);
        const char *name = std::getenv("KVO_FUZZ");
        return operations.at(name ? name : "");
    }();
    // A copy, so that the address sanitizer sees what is read beyond the end.
    operation(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    return 0;
}
