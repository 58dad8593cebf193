// What the vendor's toolkit library calls in an application that it is linked with. Only in builds against that
// library.
extern "C" {

int user_initialize_plus();
void user_terminate_plus();

int user_initialize(int /*argumentCount*/, char* /*arguments*/[], char* /*version*/, char* /*build*/,
                    wchar_t /*errorText*/[80]) {
  return user_initialize_plus();
}

void user_terminate() { user_terminate_plus(); }
}
