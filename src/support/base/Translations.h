#pragma once

/// Loads the translations of the user's languages for our texts (`translations/ravelin_<language>.qm` in the
/// resource folder) and for Qt's. Where there are none for our texts, the English one is used, which has the
/// forms of the plural. Once, after the application object was made, on the main thread.
void installTranslations();
