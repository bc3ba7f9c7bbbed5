// A library with one of everything that a linker lays out: code, constants, pointers to be relocated, data, zeros,
// thread-local data and a constructor that touches them.
namespace {

int data[300] = {1, 2};
int zeros[5000];
const char* const names[] = {"a", "b"};
thread_local int own = 3;

}  // namespace

extern "C" int linked_library_function(int index) {
  own += index;
  zeros[index] = data[index] + own;
  return zeros[index] + *names[index % 2];
}

[[gnu::constructor]] static void Start() {
  zeros[4999] = linked_library_function(299);
}
