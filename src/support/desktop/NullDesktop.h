#pragma once

#include "support/desktop/Desktop.h"

/// For programs and tests without a desktop: every request does nothing. Main thread only.
class NullDesktop : public Desktop {
public:
    using Desktop::Desktop;

    quint32 acquireSleepAssertion(const QString&) override { return ++m_lastAssertion; }
    void releaseSleepAssertion(quint32) override {}
    void notify(const Notification&) override {}
    void reveal(const QString&) override {}
    bool openUrl(const QUrl&) override { return false; }

private:
    quint32 m_lastAssertion = 0;
};
