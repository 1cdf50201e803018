#pragma once

// The operator-interface language: Chinese or English, persisted as `ui_language`. Operator
// texts are English source strings translated through Qt Linguist; switching installs or
// removes the Chinese translator, which re-translates every open window. GUI thread only.

#include <QString>

namespace selvane {

// "zh" and "zh_cn" (any case) mean Chinese; anything else English.
bool isChineseLanguageCode(const QString &code);
bool loadChineseLanguageFlag();
void storeLanguageFlag(bool chinese);
// Installs (true) or removes (false) the application's Chinese translator; false when the
// translation could not be loaded.
bool installUiTranslator(bool chinese);

} // namespace selvane
