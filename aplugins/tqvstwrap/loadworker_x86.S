// The 32-bit abort stub a hung load worker thread is pointed at.
    .intel_syntax noprefix
    .text

// Entered with the interrupted instruction's address on top of the stack, as a call would leave
// it. Exception dispatch follows the registration records on the stack, so a plain frame is all
// the stub needs.
    .globl _tq_worker_abort
    .def _tq_worker_abort; .scl 2; .type 32; .endef
_tq_worker_abort:
    push ebp
    mov ebp, esp
    and esp, -16
    push 0
    push 0
    push 1
    push 0xE0000001
    call [__imp__RaiseException@16]
    int3
