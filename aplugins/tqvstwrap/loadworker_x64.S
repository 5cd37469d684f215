// The 64-bit abort stub a hung load worker thread is pointed at.
    .intel_syntax noprefix
    .text

// Entered with the interrupted instruction's address on top of the stack, as a call would leave
// it. The frame pointer makes the unwinder walk back into the interrupted code whatever the
// alignment of the stack was there.
    .globl tq_worker_abort
    .def tq_worker_abort; .scl 2; .type 32; .endef
    .seh_proc tq_worker_abort
tq_worker_abort:
    push rbp
    .seh_pushreg rbp
    mov rbp, rsp
    .seh_setframe rbp, 0
    .seh_endprologue
    and rsp, -16
    sub rsp, 32
    mov ecx, 0xE0000001
    mov edx, 1
    xor r8d, r8d
    xor r9d, r9d
    call [rip + __imp_RaiseException]
    int3
    .seh_endproc
