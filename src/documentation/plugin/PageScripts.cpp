#include "documentation/plugin/PageScripts.h"

namespace pagescripts {

QString forbidScrolling() {
    return QStringLiteral("document.documentElement.style.setProperty('overflow', 'hidden', 'important')");
}

QString hideListOfPages() {
    return QStringLiteral(
        "for (const list of document.querySelectorAll('nav.pages')) list.style.display = 'none'");
}

QString applyColours(bool dark) {
    // The result of the colour-scheme media query is fixed, so each rule's query is replaced by one with the
    // wanted result.
    return QStringLiteral(R"js((wanted => {
    const before = window.queriesBefore ??= new Map();
    const answer = list => {
        const query = before.get(list) ?? list.mediaText;
        if (!query.includes('prefers-color-scheme')) return;
        before.set(list, query);
        list.mediaText = query.replace(/\(\s*prefers-color-scheme\s*:\s*(\w+)\s*\)/g,
            (_, scheme) => scheme === wanted ? '(min-width: 0px)' : '(max-width: 0px)');
    };
    for (const sheet of document.styleSheets) {
        answer(sheet.media);
        try {
            for (const rule of sheet.cssRules) if (rule instanceof CSSMediaRule) answer(rule.media);
        } catch (foreign) {}
    }
    const schemes = document.querySelector('meta[name="color-scheme"]')?.content ?? '';
    if (schemes.includes(wanted)) document.documentElement.style.colorScheme = wanted;
})('%1'))js")
        .arg(dark ? QStringLiteral("dark") : QStringLiteral("light"));
}

}  // namespace pagescripts
