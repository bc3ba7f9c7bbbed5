// The library that the ELF targets spoil: bytes of each kind that a segment is for, and a pointer to relocate.
const char text[] = "read only";
char data[] = "written";
char zeros[8192];
const char* pointer = data;
