/* What the C runtime of another compiler would bring: the entry point, and the mark that floating
 * point is used. It lets a program be linked the way that compiler links, without having it. */
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
