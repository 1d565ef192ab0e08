// What is measured inside a process. Each function registers the library's side under the name
// "ours" and the peer's under "peer"; the runner gives each subject a process of its own, since the
// library keeps state for the life of one.
#pragma once

// A warm choice among three languages, with the sibling library loaded or searched for at each
// call; peer: ICU. Throw where the machine is not as the name says.
void RegisterLanguageWithSibling();
void RegisterLanguageWithoutSibling();
void RegisterTrace();        // a trace line without a listener; peer: spdlog to a null sink
void RegisterTraceFilter();  // a trace line that a filter sees; the same peer
void RegisterCookieRead();  // one value out of a file of 50 cookies; peer: libcurl loading the file
void RegisterDispatch();    // a question to the update service; peer: the service's own operation
void RegisterCookieWrite();  // one value into it; peer: libcurl writing the file out
