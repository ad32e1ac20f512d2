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

#include <log4qt/logmanager.h>
#include <sys/mman.h>
#include <unistd.h>

#include <map>

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
    require(::ftruncate(descriptor, 0) == 0 && ::pwrite(descriptor, content, content.size(), 0) == content.size());
    return u"/proc/self/fd/%1"_s.arg(descriptor);
}

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

/// The first byte tells how the exchange ended, the others are the body.
void errorCheck(const QByteArray &input)
{
    static const kvo::Interface client{utils::ForMock()};
    const auto how = static_cast<uchar>(input.isEmpty() ? 0 : input[0]);
    const auto error = how % 2 ? QNetworkReply::TimeoutError : QNetworkReply::NoError;
    const QJsonObject body = object(input.mid(1));
    const http::Response response(how % 4 * 100 + 200, error, tr::Tr(u"?"_s), QJsonDocument(body));
    orRefuse([&] { client.checkForError(response, how & 16); });
    static_cast<void>(kvo::Response(body).redeemPointsAmount());
}

void pluginData(const QByteArray &input)
{
    const QVariantMap stored = object(input).toVariantMap();
    const QVariantList impacts = kvo::toPlainList(kvo::bonusImpactsFrom(stored.value(u"bonusImpacts"_s).toList()));
    require(kvo::toPlainList(kvo::bonusImpactsFrom(impacts)) == impacts);
    QStringList unreadable;
    kvo::bonusRecordFrom(stored, unreadable);
}

/// A row a line: kind, key and content, separated by tabs. What is accepted can be written, and read again.
void check(const QByteArray &input)
{
    QList<CheckRow> rows;
    for (const QByteArray &line : input.split('\n'))
        if (const QByteArrayList parts = line.split('\t'); parts.size() == 3)
            rows.append({QString::fromUtf8(parts[0]), QString::fromUtf8(parts[1]), parts[2]});
    QSharedPointer<SaleDocument> check;
    orRefuse([&] { check = CheckRows().read(rows); });
    if (check)
        require(!CheckRows().read(CheckRows().update(*check).written).isNull());
}

void typedLine(const QByteArray &input)
{
    static const till::Catalogue catalogue(QStringLiteral(KVO_SOURCES "/till/goods.json"));
    orRefuse([&] { till::readTypedStep(QString::fromUtf8(input).section(u'\n', 0, 0) + u'3', catalogue); });
}

/// A body at the simulator, read as each of the requests that it may be.
void wire(const QByteArray &input)
{
    const auto attempt = [&](auto read) {
        orRefuse<sim::Refusal>([&] { read(sim::parseObject(input.toStdString())); });
    };
    attempt(sim::readOrder);
    attempt(sim::readBinding);
    attempt(sim::readCancellation);
    attempt(sim::readMessage);
    attempt([](const sim::Json &body) { require(sim::readCustomer(body, "").balance >= 0); });
}

using Input = const QByteArray &;
const std::map<std::string_view, void (*)(Input)> operations{
    {"answer", [](Input input) { readAnswer(input); }},
    {"catalogue", [](Input input) { orRefuse([&] { till::Catalogue(file(input)).find(u"3*а"_s); }); }},
    {"check", check},
    {"configuration", [](Input input) { orRefuse([&] { till::settingFaults(Config(file(input)), hostSettings()); }); }},
    {"csv", [](Input input) { till::readCsv(input); }},
    {"error-check", errorCheck},
    {"event", [](Input input) { kvo::Request::fromQueueEvent(object(input)).toQueueEvent(); }},
    {"plugin-data", pluginData},
    {"scenario", [](Input input) { orRefuse([&] { till::readScenario(file(input)); }); }},
    {"typed-line", typedLine},
    {"wire", wire},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const auto operation = [] {
        Log4Qt::LogManager::rootLogger()->setLevel(Log4Qt::Level::OFF_INT);
        return operations.at(std::getenv("KVO_FUZZ"));
    }();
    // A copy, so that the address sanitizer sees what is read beyond the end.
    operation(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    return 0;
}
