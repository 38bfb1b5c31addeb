/* Defines two symbols that Microsoft's C runtime usually provides: the entry point and _fltused,
 * which marks the use of floating-point numbers. */
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
