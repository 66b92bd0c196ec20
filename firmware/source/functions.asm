; Functions of numbers
