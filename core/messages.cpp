// The message catalogue behind orv_serv_print. Each message knows the types
// of its arguments: 's' a name (const char*), 'i' an index (int), 'd' a value
// (double).
#include <orv/orv_core.h>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

namespace {

struct Message {
    int number;
    const char* args;
    const char* text;  // placeholders in argument order
};

const Message kCatalogue[] = {
    {748, "si", "%s: argument %d is invalid."},
    {749, "s", "%s: a pointer argument is null or cannot be used."},
    {750, "s", "%s: an argument lies outside the domain of the function."},
    {751, "s", "%s: the result is a pole (the function is infinite there)."},
    {752, "s", "%s: the result overflows the range of the element type."},
    {753, "s", "%s: the result underflows the range of the element type."},
    {754, "s", "%s: an error of unknown kind was reported."},
    {755, "id", "    element %d: argument = %.17g"},
    {756, "id", "    element %d: result = %.17g"},
    {757, "id", "    element %d: argument = %.17g"},
    {758, "id", "    element %d: first result = %.17g"},
    {759, "id", "    element %d: second result = %.17g"},
    {760, "id", "    element %d: first argument = %.17g"},
    {761, "id", "    element %d: second argument = %.17g"},
    {762, "id", "    element %d: result = %.17g"},
    {763, "id", "    element %d: first argument = %.17g"},
    {764, "id", "    element %d: second argument = %.17g"},
    {765, "id", "    element %d: first result = %.17g"},
    {766, "id", "    element %d: second result = %.17g"},
    {773, "",
     "vector math: the per-thread state could not be created (no thread-local slot or no "
     "memory); vector functions cannot run in this thread."},
};

const Message* find(int number) {
    for (const Message& m : kCatalogue)
        if (m.number == number) return &m;
    return nullptr;
}

// Formats with the arguments that were given; a missing one shows as "?".
int vformat(char* buf, int buf_len, int msg_no, int argc, va_list ap) {
    const Message* m = find(msg_no);
    if (m == nullptr) return -1;
    const char* s = "?";
    int i = 0;
    double d = 0.0;
    const int want = static_cast<int>(strlen(m->args));
    const bool complete = argc >= want;
    if (complete) {
        for (int k = 0; k < want; ++k) {
            switch (m->args[k]) {
                case 's': s = va_arg(ap, const char*); if (!s) s = "(null)"; break;
                case 'i': i = va_arg(ap, int); break;
                case 'd': d = va_arg(ap, double); break;
            }
        }
    }
    char tmp[1];
    if (buf == nullptr || buf_len <= 0) { buf = tmp; buf_len = 1; }
    if (!complete && want > 0)
        return snprintf(buf, static_cast<size_t>(buf_len), "message %d (arguments missing)", msg_no);
    if (strcmp(m->args, "si") == 0) return snprintf(buf, static_cast<size_t>(buf_len), m->text, s, i);
    if (strcmp(m->args, "s") == 0) return snprintf(buf, static_cast<size_t>(buf_len), m->text, s);
    if (strcmp(m->args, "id") == 0) return snprintf(buf, static_cast<size_t>(buf_len), m->text, i, d);
    return snprintf(buf, static_cast<size_t>(buf_len), "%s", m->text);
}

}  // namespace

extern "C" {

int orv_serv_format(char* buf, int buf_len, int msg_no, int argc, ...) {
    va_list ap;
    va_start(ap, argc);
    int r = vformat(buf, buf_len, msg_no, argc, ap);
    va_end(ap);
    return r;
}

void orv_serv_print(int channel, int msg_no, int argc, ...) {
    char line[512];
    va_list ap;
    va_start(ap, argc);
    int r = vformat(line, sizeof line, msg_no, argc, ap);
    va_end(ap);
    if (r < 0) snprintf(line, sizeof line, "message %d (not in the catalogue)", msg_no);
    FILE* out = channel == 1 ? stderr : stdout;
    fprintf(out, "%s\n", line);
    fflush(out);
}

}  // extern "C"
