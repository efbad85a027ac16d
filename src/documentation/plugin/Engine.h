#pragma once

#include <memory>

class QWebEngineProfile;

/// The process's web engine. Main thread only.
namespace engine {

/// Starts it without graphics hardware, in the colour scheme of the application's palette. Call once.
void start();

/// The engine's colour scheme is that of the palette at start(); it cannot be changed later.
bool startedDark();
bool isDarkNow();

/// The profile that all open views share. It stores nothing on disk and is deleted with the last view.
std::shared_ptr<QWebEngineProfile> profile();

}  // namespace engine
