/* Defines two parts of Microsoft's C runtime, the entry point and the floating-point mark, so that
 * a program links as with that compiler. */
#include <stdlib.h>

int _fltused = 0;

typedef struct StartInfo {
    int newMode;
} StartInfo;
void __getmainargs(int* count, char*** arguments, char*** environment, int expand, StartInfo* info);
int main(int count, char** arguments);

void Start(void) {
    StartInfo info = {0};
    char **arguments, **environment;
    int count;
    __getmainargs(&count, &arguments, &environment, 0, &info);
    exit(main(count, arguments));
}
