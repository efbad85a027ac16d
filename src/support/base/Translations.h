#pragma once

/// Loads the translations of the user's languages for our texts (`translations/ravelin_<language>.qm` in the
/// resource folder) and for Qt's. If there are none for our texts, loads the English one, which has the
/// plural forms. Call once on the main thread, after creating the application object.
void installTranslations();
