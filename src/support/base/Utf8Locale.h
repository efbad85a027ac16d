#pragma once

/// Sets the locale's encoding to UTF-8, which file names use, if it is another one (a cron job, a bare ssh);
/// keeps the user's languages. Call first in main(), before threads are started.
void makeSureOfUtf8();
