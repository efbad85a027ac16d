#pragma once

#include <memory>

class QWebEngineProfile;

/// The engine of this process. Main thread only.
namespace engine {

/// Starts it: without graphics hardware, in the colours of the application's palette. Once.
void start();

/// The pages' scheme of colours is that of the palette at the start; the engine cannot change it.
bool startedDark();
bool isDarkNow();

/// What the views of now have in common. Nothing of it is written to disk, and it goes with the last view.
std::shared_ptr<QWebEngineProfile> profile();

}  // namespace engine
