#include "pdf/token/PDFToken.h"

#include <vector>

void PDFToken::Destroy(PDFToken* token) {
    // Tokens belong to one thread, so one queue serves.
    static std::vector<PDFToken*>* pending = nullptr;
    if (pending) {
        pending->push_back(token);
        return;
    }
    std::vector<PDFToken*> queue{token};
    pending = &queue;
    while (!queue.empty()) {
        PDFToken* next = queue.back();
        queue.pop_back();
        delete next; // its items' releases land in the queue
    }
    pending = nullptr;
}
