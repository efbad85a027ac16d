#include "support/alerts/AlertQueue.h"

#include "support/alerts/AlertPresenter.h"

#include <QList>

#include <algorithm>

namespace {

struct PendingAlert {
    Block show;
    QString key;
};

QList<PendingAlert>& queue() {
    static QList<PendingAlert> pending;
    return pending;
}

bool isShowing = false;  // Whether the first alert of the queue is open.

void showNext() {
    if (isShowing || queue().isEmpty()) return;
    const Block show = queue().first().show;
    isShowing = true;
    show();
    isShowing = false;
    queue().removeFirst();
    if (!queue().isEmpty()) dispatch_async_main(showNext);
}

}  // namespace

void showInTurn(Block show, const QString& key) {
    if (!alertPresenter().waitsForUser()) {
        show();
        return;
    }
    const auto isSame = [&](const PendingAlert& pending) { return !key.isEmpty() && pending.key == key; };
    if (std::ranges::any_of(queue(), isSame)) return;
    queue().append({std::move(show), key});
    dispatch_async_main(showNext);
}
