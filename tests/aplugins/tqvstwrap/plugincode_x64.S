// Code shaped the way plug-ins ship it, for the guard tests: no unwind data, unmasked FPU faults,
// an own SEH scope.
    .intel_syntax noprefix
    .text

// void tq_test_call_without_unwind_info(void (*fn)(void*), void* arg)
// A non-leaf frame with no unwind data. The system's dispatcher takes a frame without unwind data
// for a leaf and so scans the stack for anything that looks like a return address; this frame, like
// real ones, holds stale code addresses, and the unwind data of that code leads the scan to a frame
// pointer that is not even aligned.
    .globl tq_test_call_without_unwind_info
tq_test_call_without_unwind_info:
    push rbp
    mov rbp, rsp
    push r15
    sub rsp, 40
    lea r15, [rsp+36]
    lea rax, [rip+tq_test_stale_code]
    mov [rsp], rax
    mov [rsp+8], rax
    mov [rsp+16], rax
    mov [rsp+24], rax
    mov [rsp+32], rax
    mov rax, rcx
    mov rcx, rdx
    call rax
    mov r15, [rbp-8]
    leave
    ret

// Code with unwind data that takes r15 for its frame pointer; only its address is ever used.
    .seh_proc tq_test_stale_code_owner
tq_test_stale_code_owner:
    push r15
    .seh_pushreg r15
    mov r15, rsp
    .seh_setframe r15, 0
    .seh_endprologue
tq_test_stale_code:
    nop
    mov rsp, r15
    pop r15
    ret
    .seh_endproc

// void tq_test_divide_sse(void): 1/0 in SSE with the divide-by-zero exception unmasked.
// Leaves use their home area, so they keep rsp and need no unwind data.
    .globl tq_test_divide_sse
tq_test_divide_sse:
    stmxcsr [rsp+8]
    and dword ptr [rsp+8], ~0x200
    ldmxcsr [rsp+8]
    mov eax, 1
    cvtsi2ss xmm0, eax
    xorps xmm1, xmm1
    divss xmm0, xmm1
    ret

// void tq_test_divide_x87(void): 1/0 on the x87 with the divide-by-zero exception unmasked;
// raised at the fwait.
    .globl tq_test_divide_x87
tq_test_divide_x87:
    fnstcw [rsp+8]
    and word ptr [rsp+8], ~4
    fldcw [rsp+8]
    mov dword ptr [rsp+16], 0
    fld1
    fdiv dword ptr [rsp+16]
    fwait
    fstp st(0)
    ret

// int tq_test_plugin_try(void (*fn)(void*), void* arg, DWORD code)
// A plug-in's own __try around fn(arg) whose filter takes exactly `code`: returns 1 when fn
// returns, 0 when the handler (tq_test_plugin_handler, which finds `code` at establisher+32)
// unwound to the landing.
    .globl tq_test_plugin_try
    .def tq_test_plugin_try; .scl 2; .type 32; .endef
    .seh_proc tq_test_plugin_try
tq_test_plugin_try:
    .seh_handler tq_test_plugin_handler, @except
    sub rsp, 40
    .seh_stackalloc 40
    .seh_endprologue
    mov [rsp+32], r8d
    mov rax, rcx
    mov rcx, rdx
    call rax
    mov eax, 1
    jmp 1f
    .globl tq_test_plugin_landing
tq_test_plugin_landing:
    xor eax, eax
1:
    add rsp, 40
    ret
    .seh_endproc
