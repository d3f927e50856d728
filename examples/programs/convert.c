/* Makes a WebP file of at most 1200 pixels from a picture.
 * Build: cc -o convert convert.c $(pkg-config --cflags --libs kestrine) */
#include <kestrine.h>
#include <stdio.h>

int main(int argc, char **argv)
{
    kestrine_picture *picture = NULL;
    kestrine_info info = {.size = sizeof info};
    int failed;

    if (argc != 3) {
        fprintf(stderr, "usage: %s PICTURE RESULT\n", argv[0]);
        return 2;
    }
    failed = kestrine_open_path(argv[1], &picture) || kestrine_describe(picture, &info)
             || kestrine_convert_to_path(picture, "{\"longest\": 1200, \"format\": \"webp\"}", argv[2]);
    if (failed)
        fprintf(stderr, "%s: %s\n", argv[1], kestrine_error_text());
    else
        printf("%s, %u x %u -> %s\n", info.format, info.width, info.height, argv[2]);
    kestrine_close(picture);
    return failed ? 1 : 0;
}
