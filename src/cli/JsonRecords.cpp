#include "cli/JsonRecords.h"

#include <QJsonArray>

namespace json {

namespace {

QJsonArray messageArray(const Messages& messages) {
    QJsonArray array;
    for (const auto& message : messages)
        array.append(json::message(message));
    return array;
}

}  // namespace

QJsonObject message(const ConsolePresenter::Message& message) {
    return {{"key", message.key.isEmpty() ? QJsonValue() : QJsonValue(message.key)},
            {"title", message.title},
            {"message", message.message}};
}

QJsonObject probed(const QString& file, const std::optional<MKVFileInfo>& record,
                   std::optional<qsizetype> bestTrack, const Messages& messages) {
    QJsonObject object{
        {"file", file}, {"accepted", record.has_value()}, {"messages", messageArray(messages)}};
    if (!record) return object;
    QJsonArray tracks;
    QJsonArray rates;
    for (const AudioEntry& entry : record->audioTrackInformation) {
        tracks.append(entry.text);
        rates.append(entry.sampleRate);
    }
    QJsonArray subtitles;
    for (const int stream : record->subtitleTrackIDs)
        subtitles.append(stream);
    object.insert("fileName", record->fileName);
    object.insert("informationString", record->informationString);
    object.insert("videoTrackID", record->videoTrackID);
    object.insert("videoTrackCodec", record->videoTrackCodec);
    object.insert("runtimeSeconds",
                  record->runtimeSeconds ? QJsonValue(*record->runtimeSeconds) : QJsonValue());
    object.insert("fileSize", static_cast<qint64>(record->fileSize));
    object.insert("audioTrackInformation", tracks);
    object.insert("sampleRates", rates);
    object.insert("subtitleTrackIDs", subtitles);
    object.insert("bestLanguage",
                  bestTrack ? QJsonValue(record->audioTrackInformation[*bestTrack].text) : QJsonValue());
    return object;
}

}  // namespace json
