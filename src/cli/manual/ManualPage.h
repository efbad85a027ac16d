#pragma once

#include <QString>

struct CommandDescription;

/// The page for man(1), as the source for troff, in English.
QString manualPage(const CommandDescription& program);
