// Code as tools without unwind data emit it: a non-leaf routine calling one that writes to address
// 0. The system's dispatcher takes frames without unwind data for leaves and so scans the stack for
// anything that looks like a return address; these frames, like real ones, hold stale code
// addresses, and the unwind data of that code leads the scan to a frame pointer that is not even
// aligned. Only a guard that copes on its own catches this.
    .intel_syntax noprefix
    .text

// void tq_nounwind_write_null(void)
    .globl tq_nounwind_write_null
tq_nounwind_write_null:
    push rbp
    mov rbp, rsp
    push r15
    sub rsp, 40
    lea r15, [rsp+36]
    lea rax, [rip+stale_code]
    mov [rsp+32], rax
    call write_null
    mov r15, [rbp-8]
    leave
    ret

write_null:
    sub rsp, 24
    mov qword ptr [rsp], 1
    lea rax, [rip+stale_code]
    mov [rsp+8], rax
    xor eax, eax
    mov dword ptr [rax], 1
    add rsp, 24
    ret

// Code with unwind data that takes r15 for its frame pointer; only its address is ever used.
    .seh_proc stale_code_owner
stale_code_owner:
    push r15
    .seh_pushreg r15
    mov r15, rsp
    .seh_setframe r15, 0
    .seh_endprologue
stale_code:
    nop
    mov rsp, r15
    pop r15
    ret
    .seh_endproc
