/* Writes files to standard output, for "pipe:" commands:

     emit [-w MS] [-p MS] [-m MS] [-c BYTES] [-s MS] [-x STATUS] FILE...

   -w waits before each file, -p pauses after each twentieth of it, -c writes so much of it only, -m
   waits so long for one that is missing, -s stays so long at the end, -x ends with this status. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#define rest(ms) Sleep((DWORD)(ms))
#else
#include <unistd.h>
static void rest(long ms) {
    for (; ms > 0; ms -= 500) usleep((ms < 500 ? ms : 500) * 1000);
}
#endif

static long option(char letter, int argc, char** argv) {
    for (int i = 1; i + 1 < argc; ++i)
        if (argv[i][0] == '-' && argv[i][1] == letter) return atol(argv[i + 1]);
    return 0;
}

static void copy(FILE* file, long pause, long cut) {
    static char block[1 << 24];
    size_t size = fread(block, 1, sizeof block, file);
    if (cut > 0 && size > (size_t)cut) size = (size_t)cut;
    const size_t piece = pause > 0 ? size / 20 + 1 : size;
    for (size_t at = 0; at < size; at += piece) {
        fwrite(block + at, 1, size - at < piece ? size - at : piece, stdout);
        fflush(stdout);
        rest(pause);
    }
}

int main(int argc, char** argv) {
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') {
            ++i;
            continue;
        }
        rest(option('w', argc, argv));
        FILE* file = fopen(argv[i], "rb");
        if (file == NULL) {
            perror(argv[i]);
            rest(option('m', argc, argv));
            return 1;
        }
        copy(file, option('p', argc, argv), option('c', argc, argv));
        fclose(file);
    }
    rest(option('s', argc, argv));
    return (int)option('x', argc, argv);
}
