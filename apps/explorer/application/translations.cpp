// SPDX-License-Identifier: MIT
#include "translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

// Resources of a static library must be named in the program.
static void initTranslationResources()
{
#ifdef SONDIXQT_WITH_TRANSLATIONS
    Q_INIT_RESOURCE(translations);
#endif
}

namespace Explorer {

namespace {

void installFile(QCoreApplication &application, const QLocale &locale, const QString &name, const QString &folder)
{
    auto *translator = new QTranslator(&application);
    if (!translator->load(locale, name, QStringLiteral("_"), folder) ||
        !QCoreApplication::installTranslator(translator))
        delete translator;
}

} // namespace

QString languageOption(const QStringList &arguments)
{
    const QString option = QStringLiteral("--lang");
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == option)
            return arguments.value(i + 1);
        if (arguments[i].startsWith(option + QLatin1Char('=')))
            return arguments[i].mid(option.size() + 1);
    }
    return {};
}

void installTranslations(QCoreApplication &application, const QString &language)
{
    initTranslationResources();
    const QLocale locale = language.isEmpty() ? QLocale::system() : QLocale(language);
    QLocale::setDefault(locale);
    // English is what the sources have. Without this a further language of the system would be taken.
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
        return;
    installFile(application, locale, QStringLiteral("qtbase"),
                QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    installFile(application, locale, QStringLiteral("sondixqt-explorer"), QStringLiteral(":/translations"));
}

} // namespace Explorer
