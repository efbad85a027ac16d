#include "support/AlertQueue.h"

#include "support/AlertPresenter.h"

#include <QList>

namespace {

QList<Block>& queue() {
    static QList<Block> waiting;
    return waiting;
}

bool isShowing = false;

void showNext() {
    if (isShowing || queue().isEmpty()) return;
    const Block show = queue().takeFirst();
    isShowing = true;
    show();
    isShowing = false;
    if (!queue().isEmpty()) dispatch_async_main(showNext);
}

}  // namespace

void showInTurn(Block show) {
    if (!alertPresenter().waitsForUser()) {
        show();
        return;
    }
    queue().append(std::move(show));
    dispatch_async_main(showNext);
}
