#include "media/Reading.h"

#include "media/Ebml.h"

#include <utility>

namespace media {

Reading read(const QString& path, const Options& options, std::stop_token stop) {
    Container container = Container::Unknown;
    {
        File file(path, stop, options.mayReadUpTo);
        FileReader bytes(file);
        const quint64 begin = bytes.number(0, 4);
        // The first box of old QuickTime files may be any of these.
        const quint64 type = bytes.number(4, 4);
        static constexpr quint64 kTypes[] = {0x66747970, 0x6D6F6F76, 0x6D646174, 0x66726565,
                                             0x736B6970, 0x77696465, 0x706E6F74};
        for (const quint64 known : kTypes) {
            if (type == known) container = Container::Mp4;
        }
        if (begin == 0x1A45DFA3) container = Container::Matroska;
        if (container == Container::Unknown) {
            Reading reading;
            reading.opened = file.isOpen();
            reading.cancelled = file.isCancelled();
            reading.size = file.size();
            reading.problem = !reading.opened    ? Problem::CannotOpen
                              : file.hasFailed() ? Problem::CannotRead
                                                 : Problem::UnknownFormat;
            return reading;
        }
    }
    return container == Container::Mp4 ? readMp4(path, options, std::move(stop))
                                       : readMatroska(path, options, std::move(stop));
}

}  // namespace media
