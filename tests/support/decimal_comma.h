#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace korvale::test {

/// While it lives, numbers are written as in German, with a comma for the point, in a locale that is installed or,
/// where none is, made for the test.
class DecimalComma {
public:
    DecimalComma()
    {
        if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr)
            return;
        const std::filesystem::path folder = testing::TempDir() + "korvale_locale_" + std::to_string(getpid());
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "source") << "comment_char %\nescape_char /\nLC_NUMERIC\ndecimal_point \",\"\n"
                                            "thousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n";
        const std::string make =
            "cd '" + folder.string() + "' && localedef -c -i source -f ANSI_X3.4-1968 ./de_XX 2>/dev/null";
        status_ = std::system(make.c_str()); // 256 where only warnings are given, as about the categories left out
        setenv("LOCPATH", folder.c_str(), 1);
        std::setlocale(LC_NUMERIC, "de_XX");
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder);
    }
    ~DecimalComma() { std::setlocale(LC_NUMERIC, "C"); }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;

    bool is_in_force() const { return std::strtod("1,5", nullptr) == 1.5 && std::strtod("1.5", nullptr) == 1.0; }
    int status() const { return status_; }

private:
    int status_ = 0;
};

} // namespace korvale::test
