#include "Launch.h"

int main(int argc, char** argv) {
    return launch(argc, argv);
}
