#include "app/Language.h"

#include "media/StoredSettings.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QSettings>
#include <QTranslator>

namespace selvane {

namespace {
QTranslator *g_translator = nullptr;
// Qt's own texts (OK, Cancel, the file and colour dialogs), where the system has them.
QTranslator *g_qtTranslator = nullptr;
} // namespace

bool isChineseLanguageCode(const QString &code)
{
    const QString lower = code.toLower();
    return lower == "zh" || lower == "zh_cn";
}

bool loadChineseLanguageFlag()
{
    StoredSettings settings;
    return isChineseLanguageCode(settings.value("ui_language", "en").toString());
}

void storeLanguageFlag(bool chinese)
{
    StoredSettings settings;
    settings.setValue("ui_language", chinese ? "zh" : "en");
    settings.sync();
}

bool installUiTranslator(bool chinese)
{
    if (!chinese) {
        for (QTranslator **installed : {&g_translator, &g_qtTranslator}) {
            if (*installed) {
                QCoreApplication::removeTranslator(*installed);
                delete *installed;
                *installed = nullptr;
            }
        }
        return true;
    }
    if (g_translator)
        return true;
    auto *qt = new QTranslator(QCoreApplication::instance());
    if (qt->load("qtbase_zh_CN", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(qt);
        g_qtTranslator = qt;
    } else {
        delete qt;
    }
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(":/i18n/selvane_zh_CN.qm")) {
        delete translator;
        return false;
    }
    QCoreApplication::installTranslator(translator);
    g_translator = translator;
    return true;
}

} // namespace selvane
