/* Writes files to standard output, for "pipe:" commands: emit [-w MILLISECONDS] FILE...
   With -w it waits before each file. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#define rest(ms) Sleep(ms)
#else
#include <unistd.h>
#define rest(ms) usleep((ms)*1000)
#endif

int main(int argc, char** argv) {
    unsigned wait = 0;
    char block[4096];
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "-w") == 0 && i + 1 < argc) {
            wait = (unsigned)atoi(argv[++i]);
            continue;
        }
        rest(wait);
        FILE* file = fopen(argv[i], "rb");
        if (file == NULL) {
            perror(argv[i]);
            return 1;
        }
        size_t n;
        while ((n = fread(block, 1, sizeof block, file)) > 0) fwrite(block, 1, n, stdout);
        fclose(file);
    }
    return 0;
}
