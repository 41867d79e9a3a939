# The program's version, in one place: the main project and the fuzz build both read it.
set(VELMORA_VERSION 0.1.0)
