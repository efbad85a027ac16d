#include "support/desktop/Desktop.h"

#include <QFile>

namespace {

/// For programs and tests without a desktop: every request does nothing.
class NullDesktop : public Desktop {
public:
    quint32 acquireSleepAssertion(const QString&) override { return ++m_lastAssertion; }
    void releaseSleepAssertion(quint32) override {}
    void notify(const Notification&) override {}
    void reveal(const QString&) override {}
    bool openUrl(const QUrl&) override { return false; }

private:
    quint32 m_lastAssertion = 0;
};

Desktop* theDesktop = nullptr;

}  // namespace

void Desktop::revealTogether(const QStringList& paths) {
    for (const QString& path : paths)
        reveal(path);
}

bool Desktop::moveToTrash(const QString& path) {
    return QFile::moveToTrash(path);
}

void setSharedDesktop(Desktop* desktop) {
    theDesktop = desktop;
}

Desktop& sharedDesktop() {
    static NullDesktop nothing;
    return theDesktop ? *theDesktop : nothing;
}
