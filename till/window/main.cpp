// kvo-window: the reference till with a window.
#include "mainwindow.h"
#include "till/console.h"

#include <CLI/CLI.hpp>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtCore/QResource>
#include <QtCore/QTranslator>
#include <QtWidgets/QApplication>

namespace {

/// Translates the window's Russian texts into English.
class EnglishTranslator : public QTranslator
{
public:
    QString translate(const char *, const char *source, const char *, int) const override
    {
        return m_texts.value(QString::fromUtf8(source)).toString();
    }

private:
    const QJsonObject m_texts =
        QJsonDocument::fromJson(QResource(QStringLiteral(":/window/english.json")).uncompressedData()).object();
};

} // namespace

int main(int argc, char *argv[])
{
    till::console::openStandardStreams();
    std::string configFile = "kvo-till.ini";
    std::string language = "ru";
    CLI::App program("The reference till with a window: sells with the real loyalty plugin.", "kvo-window");
    program.add_option("--config", configFile, "INI file with the configuration, the same as kvo-till's")
        ->capture_default_str();
    program.add_option("--language", language, "Language of the window")
        ->check(CLI::IsMember({"ru", "en"}))
        ->capture_default_str();
    program.set_version_flag("--version", "kvo-window " KVO_VERSION);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? 0 : 2;
    }
    QApplication application(argc, argv);

    EnglishTranslator english;
    if (language == "en")
        QApplication::installTranslator(&english);
    QLocale::setDefault(QLocale(language == "en" ? QLocale::English : QLocale::Russian));

    till::CheckThread till;
    till::MainWindow window(till);
    // The first state says how the window is to look.
    QObject::connect(&till, &till::CheckThread::changed, &window, &QWidget::show, Qt::SingleShotConnection);
    till.start(QString::fromStdString(configFile));
    const int status = QApplication::exec();
    return till.view().fault.isEmpty() ? status : 1;
}
