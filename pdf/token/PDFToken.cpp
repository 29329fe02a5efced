#include "pdf/token/PDFToken.h"

#include <vector>

void PDFToken::Destroy(PDFToken* token) {
    // Tokens belong to one thread, so one queue serves; it keeps its room between uses, so
    // releasing a token costs no allocation.
    static std::vector<PDFToken*> queue;
    static bool draining = false;
    if (draining) {
        queue.push_back(token);
        return;
    }
    draining = true;
    delete token; // its items' releases land in the queue
    while (!queue.empty()) {
        PDFToken* next = queue.back();
        queue.pop_back();
        delete next;
    }
    draining = false;
}
