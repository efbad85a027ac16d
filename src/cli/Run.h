#pragma once

#include "cli/ConsolePresenter.h"

#include <QMap>
#include <QVariant>

#include <memory>

class QuillonLib;
class Desktop;

/// The environment of a command that works on movies: the settings with the overrides of this run, the
/// presenter, the support library, the desktop. Create one at a time, for the life of the command. Main
/// thread only.
class Run {
public:
    enum class DesktopUse { None, Real };

    Run(const QMap<QString, QVariant>& overrides, DesktopUse desktop);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    ConsolePresenter& presenter() { return m_presenter; }

private:
    ConsolePresenter m_presenter;
    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<QuillonLib> m_library;
};
