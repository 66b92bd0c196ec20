; Keyboard
