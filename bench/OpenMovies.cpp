// Opens movies with libavformat and looks into their streams, as programs without a reader of their own do. What
// `tessaron info` takes is measured against this.

extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdio>

int main(int argc, char **argv)
{
    av_log_set_level(AV_LOG_QUIET);
    int failures = 0;
    for (int index = 1; index < argc; ++index) {
        AVFormatContext *context = nullptr;
        const bool isOpen = avformat_open_input(&context, argv[index], nullptr, nullptr) >= 0
            && avformat_find_stream_info(context, nullptr) >= 0;
        if (!isOpen) {
            std::fprintf(stderr, "open_movies: %s cannot be opened\n", argv[index]);
            ++failures;
        }
        avformat_close_input(&context);
    }
    return failures == 0 ? 0 : 1;
}
