#pragma once

/// Names of files are UTF-8. Where the locale says otherwise (a cron job, a bare ssh), the languages that the
/// user prefers stay and only the encoding changes. First thing in main(), before there are threads.
void makeSureOfUtf8();
