; Interrupts
