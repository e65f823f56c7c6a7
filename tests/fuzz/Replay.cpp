// Gives a fuzzer the files of its corpus, one after the other, in builds without libFuzzer.
#include <QDirIterator>
#include <QFile>
#include <iostream>

#include "tests/fuzz/Fuzzing.h"

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        int count = 0;
        for (QDirIterator files(QString::fromLocal8Bit(argv[i]), QDir::Files); files.hasNext(); ++count) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::cerr << "Cannot read " << file.fileName().toStdString() << '\n';
                return EXIT_FAILURE;
            }
            std::cout << file.fileName().toStdString() << std::endl;
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                   static_cast<size_t>(bytes.size()));
        }
        if (count == 0) {
            std::cerr << "There are no files in " << argv[i] << '\n';
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
