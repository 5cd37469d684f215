// Code shaped the way plug-ins ship it, for the guard tests: a bare frame, unmasked FPU faults, an
// own SEH scope.
    .intel_syntax noprefix
    .text

// void tq_test_call_without_unwind_info(void (*fn)(void*), void* arg)
// 32-bit code has no unwind data to lack: this is the same bare frame the 64-bit test walks
// through.
    .globl _tq_test_call_without_unwind_info
_tq_test_call_without_unwind_info:
    push ebp
    mov ebp, esp
    push dword ptr [ebp+12]
    call dword ptr [ebp+8]
    leave
    ret

// void tq_test_divide_sse(void): 1/0 in SSE with the divide-by-zero exception unmasked.
    .globl _tq_test_divide_sse
_tq_test_divide_sse:
    sub esp, 4
    stmxcsr [esp]
    and dword ptr [esp], ~0x200
    ldmxcsr [esp]
    mov eax, 1
    cvtsi2ss xmm0, eax
    xorps xmm1, xmm1
    divss xmm0, xmm1
    add esp, 4
    ret

// void tq_test_divide_x87(void): 1/0 on the x87 with the divide-by-zero exception unmasked;
// raised at the fwait.
    .globl _tq_test_divide_x87
_tq_test_divide_x87:
    sub esp, 8
    fnstcw [esp]
    and word ptr [esp], ~4
    fldcw [esp]
    mov dword ptr [esp+4], 0
    fld1
    fdiv dword ptr [esp+4]
    fwait
    fstp st(0)
    add esp, 8
    ret

// int tq_test_plugin_try(void (*fn)(void*), void* arg, DWORD code)
// A plug-in's own __try around fn(arg) whose filter takes exactly `code`. Its registration record
// is {next, tq_test_plugin_handler, code}; returns 1 when fn returns, 0 after
// tq_test_plugin_unwind.
    .globl _tq_test_plugin_try
_tq_test_plugin_try:
    push ebp
    mov ebp, esp
    push ebx
    push esi
    push edi
    push dword ptr [ebp+16]
    push offset _tq_test_plugin_handler
    push dword ptr fs:[0]
    mov fs:[0], esp
    push dword ptr [ebp+12]
    call dword ptr [ebp+8]
    add esp, 4
    mov eax, 1
.Lplugin_leave:
    pop ecx
    mov fs:[0], ecx
    add esp, 8
    pop edi
    pop esi
    pop ebx
    pop ebp
    ret

// void tq_test_plugin_unwind(void* registration, EXCEPTION_RECORD* record)
// From the scope's handler: unwinds the records above it and returns 0 from tq_test_plugin_try.
// The record sits 24 bytes below that call's ebp.
    .globl _tq_test_plugin_unwind
_tq_test_plugin_unwind:
    mov eax, [esp+4]
    mov ecx, [esp+8]
    push 0
    push ecx
    push offset 1f
    push eax
    call _RtlUnwind@16
1:
    mov eax, [esp+4]
    mov esp, eax
    lea ebp, [eax+24]
    xor eax, eax
    jmp .Lplugin_leave
