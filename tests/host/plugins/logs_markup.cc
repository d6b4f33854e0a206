// Logs and prints what a page or a terminal might obey.
#include <cstdio>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  Log("</script><script>document.title='obeyed'</script>");
  Log("<img src=x onerror=\"document.title='obeyed'\">");
  Log("%s", "a\u202eb\u2066c\x1b[31m");
  std::puts("</pre><script>document.title='obeyed'</script>");
  return -1;
}
