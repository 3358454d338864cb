/* A program in the place of another: it adds its arguments to a file, one line each time.

     log_arguments FILE ARGUMENT... */
#include <stdio.h>

int main(int argc, char** argv) {
    FILE* file = argc > 1 ? fopen(argv[1], "ab") : NULL;
    if (file == NULL) return 1;
    for (int i = 2; i < argc; ++i) fprintf(file, "%s%s", i > 2 ? " | " : "", argv[i]);
    fputc('\n', file);
    fclose(file);
    return 0;
}
