#include "probe/AudioEntry.h"

#include "support/base/Format.h"
#include "support/base/Text.h"

namespace {

QString word(const QString& text, qsizetype index) {
    const auto piece = text::piece(text, u" ", index);
    return piece ? piece->toString() : QString();
}

}  // namespace

AudioEntry AudioEntry::make(int stream, const QString& language, const QString& codec, bool surround,
                            int sampleRate) {
    const QString mark = surround ? " [5.1]" : "";
    return {makeString("#%@: %@ (%@)%@", QString::number(stream), language, codec, mark), sampleRate};
}

int AudioEntry::stream() const {
    return text::integerValue(text::piece(QStringView(text).mid(1), u":", 0).value_or(QStringView()));
}

QString AudioEntry::language() const {
    return word(text, 1);
}

QString AudioEntry::codecWord() const {
    return word(text, 2);
}

QString AudioEntry::codec() const {
    const QString word = codecWord();
    return word.size() < 2 ? QString() : word.sliced(1, word.size() - 2);
}

bool AudioEntry::isSurround() const {
    return text.contains("5.1");
}

QString AudioEntry::description() const {
    const auto piece = text::piece(text, u":", 1);
    return piece ? piece->toString() : QString();
}

QStringList texts(const QList<AudioEntry>& entries) {
    QStringList result;
    result.reserve(entries.size());
    for (const AudioEntry& entry : entries)
        result.append(entry.text);
    return result;
}
