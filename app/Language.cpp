#include "app/Language.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTranslator>

namespace selvane {

namespace {
QTranslator *g_translator = nullptr;
}

bool isChineseLanguageCode(const QString &code)
{
    const QString lower = code.toLower();
    return lower == "zh" || lower == "zh_cn";
}

bool loadChineseLanguageFlag()
{
    QSettings settings("Ostrel", "Selvane");
    return isChineseLanguageCode(settings.value("ui_language", "en").toString());
}

void storeLanguageFlag(bool chinese)
{
    QSettings settings("Ostrel", "Selvane");
    settings.setValue("ui_language", chinese ? "zh" : "en");
    settings.sync();
}

bool installUiTranslator(bool chinese)
{
    if (!chinese) {
        if (g_translator) {
            QCoreApplication::removeTranslator(g_translator);
            delete g_translator;
            g_translator = nullptr;
        }
        return true;
    }
    if (g_translator)
        return true;
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
