// The texts that users give and see: what may go to standard output and error, and in which form.
#pragma once

#include <string>
#include <string_view>

enum class Colour { kNone, kRed, kYellow, kFaint };

// Whether colours are welcome on a descriptor: it is a terminal that knows them, and the user has
// not set NO_COLOR.
bool IsColourWelcome(int descriptor);

// The text between the marks that colour it; kNone adds none.
std::string Coloured(Colour colour, const std::string& text);

// The text in a form that is safe on a terminal and stays on one line: control characters, and
// those that turn the direction of text, come out as \xNN or \uNNNN, ill-formed UTF-8 as U+FFFD.
std::string SafeText(std::string_view text);

// The same between single quotes, as it stands in a message.
std::string Quoted(std::string_view text);

// Prints a line: safe on a terminal, and as it is to a file or another program.
void PrintLine(const std::string& line);

// The text as a JSON string, with its quotes. Always well-formed UTF-8 and safe on a terminal.
std::string JsonString(std::string_view text);

// Writes all of the text to a descriptor at once, past any buffer. False, with errno set, when it
// failed or a signal came.
bool WriteText(int descriptor, std::string_view text);

// A text of the command line in UTF-16. Ends the command for one that is no UTF-8.
std::u16string WideArgument(const std::string& text);
