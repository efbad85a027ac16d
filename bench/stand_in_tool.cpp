// Stands in for the tool: reports the same movie for every file, at once, and converts nothing. Of a movie
// whose name contains "endless" the conversion lasts until it is ended.
#include <cstdio>
#include <cstring>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc == 3) {
        std::fputs(
            "Input #0, matroska,webm, from 'movie.mkv':\n"
            "  Duration: 00:42:10.00, start: 0.000000, bitrate: 4712 kb/s\n"
            "    Stream #0:0(eng): Video: h264 (High), yuv420p(progressive), 1920x1080, 25 fps (default)\n"
            "    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s (default)\n"
            "    Stream #0:2(ger): Audio: dts (DTS), 48000 Hz, 5.1(side), fltp, 1536 kb/s\n"
            "    Stream #0:3(eng): Subtitle: subrip\n"
            "    Stream #0:4(ger): Subtitle: subrip\n"
            "At least one output file must be specified\n",
            stderr);
        return 1;
    }
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i - 1], "-i") == 0 && std::strstr(argv[i], "endless")) pause();
    }
    std::FILE* output = std::fopen(argv[argc - 1], "w");
    return output && std::fputs("movie", output) >= 0 && std::fclose(output) == 0 ? 0 : 1;
}
